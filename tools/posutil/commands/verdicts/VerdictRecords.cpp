// SPDX-License-Identifier: MIT
#include "commands/verdicts/VerdictRecords.h"

#include <cstdint>
#include <cstring>

namespace PosUtil {

namespace {

// Both directions go through the fields in the order of Fields, so that they cannot differ.
class Encoder {
 public:
  void operator()(std::size_t& number) {
    const std::uint64_t wide = number;
    fBytes.append(reinterpret_cast<const char*>(&wide), sizeof wide);
  }
  void operator()(std::string& text) {
    std::size_t size = text.size();
    (*this)(size);
    fBytes += text;
  }
  void operator()(bool& flag) { fBytes += flag ? '\1' : '\0'; }

  std::string fBytes;
};

class Decoder {
 public:
  explicit Decoder(std::string_view bytes) : fBytes(bytes) {}

  void operator()(std::size_t& number) {
    std::uint64_t wide = 0;
    std::memcpy(&wide, Take(sizeof wide).data(), sizeof wide);
    number = wide;
  }
  void operator()(std::string& text) {
    std::size_t size = 0;
    (*this)(size);
    text = Take(size);
  }
  void operator()(bool& flag) { flag = Take(1)[0] != '\0'; }

 private:
  std::string_view Take(std::size_t size) {
    const std::string_view taken = fBytes.substr(0, size);
    fBytes.remove_prefix(size);
    return taken;
  }

  std::string_view fBytes;
};

template <class Coder>
void Fields(Coder& coder, std::optional<TextPlace>& place) {
  bool isThere = place.has_value();
  coder(isThere);
  if (!isThere) return;
  if (!place) place.emplace();
  coder(place->fLine);
  coder(place->fColumn);
}

template <class Coder>
void Fields(Coder& coder, VerdictMessage& message) {
  coder(message.fText);
  coder(message.fFound);
  coder(message.fPath);
  coder(message.fType);
  Fields(coder, message.fPlace);
  Fields(coder, message.fRule);
  coder(message.fOtherAlternatives);
}

template <class Coder>
void Fields(Coder& coder, VerdictRecord& record) {
  auto kind = static_cast<std::size_t>(record.fKind);
  coder(kind);
  record.fKind = static_cast<VerdictRecord::Kind>(kind);
  coder(record.fTask);
  coder(record.fName.fFile);
  coder(record.fName.fSchema);
  coder(record.fName.fDocument);
  coder(record.fText);
  coder(record.fVerdict.fIsValid);
  coder(record.fVerdict.fUnshown);
  std::size_t count = record.fVerdict.fMessages.size();
  coder(count);
  record.fVerdict.fMessages.resize(count);
  for (VerdictMessage& message : record.fVerdict.fMessages) Fields(coder, message);
}

void Send(VerdictRecord record, Output& out) {
  Encoder encoder;
  Fields(encoder, record);
  const std::uint64_t size = encoder.fBytes.size();
  out.Put({reinterpret_cast<const char*>(&size), sizeof size});
  out.Put(encoder.fBytes);
  out.Flush();
}

}  // namespace

void VerdictSender::Print(const CheckedName& name, const Verdict& verdict) {
  Send({VerdictRecord::kVerdict, fTask, name, verdict}, fOut);
}

void VerdictSender::PrintUnchecked(const CheckedName& name, const std::string& reason) {
  Send({VerdictRecord::kUnchecked, fTask, name, {}, reason}, fOut);
}

void VerdictSender::End(const VerdictCounts&) { Send({VerdictRecord::kEnd, fTask}, fOut); }

void VerdictSender::PutMessage(const std::string& text) {
  Send({VerdictRecord::kMessage, fTask, {}, {}, text}, fOut);
}

void VerdictOrder::Add(VerdictRecord record) {
  const std::size_t task = record.fTask;
  fWaiting[task].push_back(std::move(record));
  if (task != fCurrent) return;
  while (fCurrent < fWaiting.size() && PassWaiting()) ++fCurrent;
}

void VerdictOrder::Finish(const std::function<void(std::size_t task)>& onMissing) {
  for (; fCurrent < fWaiting.size(); ++fCurrent) {
    if (!PassWaiting()) onMissing(fCurrent);
  }
}

bool VerdictOrder::PassWaiting() {
  bool hasEnd = false;
  for (VerdictRecord& record : std::exchange(fWaiting[fCurrent], {})) {
    hasEnd |= record.fKind == VerdictRecord::kEnd;
    fReceive(std::move(record));
  }
  return hasEnd;
}

std::optional<VerdictRecord> VerdictReceiver::Next() {
  const std::string_view bytes = std::string_view(fBytes).substr(fUsed);
  std::uint64_t size = 0;
  if (bytes.size() < sizeof size) return std::nullopt;
  std::memcpy(&size, bytes.data(), sizeof size);
  if (bytes.size() - sizeof size < size) {
    fBytes.erase(0, fUsed);
    fUsed = 0;
    return std::nullopt;
  }
  VerdictRecord record = {};
  Decoder decoder(bytes.substr(sizeof size, size));
  Fields(decoder, record);
  fUsed += sizeof size + size;
  return record;
}

}  // namespace PosUtil
