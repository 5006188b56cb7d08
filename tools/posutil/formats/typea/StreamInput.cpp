#include "formats/typea/StreamInput.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "base/SavedException.h"
#include "files/InputFile.h"
#include "formats/typea/TypeAStream.h"

namespace PosUtil {

class StreamInput::Client final : public KAP_T_MT::KAPClientPositionableStream {
 public:
  Client(const std::string& fileName, Progress& progress) : fFile(fileName), fProgress(progress) {
    CheckTypeASize(fFile.Size(), fFile.Name());
    fProgress.Begin("reading", fFile.Size());
  }

  std::size_t Read(unsigned char* buffer, std::size_t size) override {
    return fSaved.Save([&] {
      if (!HasMore()) return std::size_t{0};
      const std::size_t count = std::min(size, fWindow.size() - fNext);
      std::memcpy(buffer, fWindow.data() + fNext, count);
      fNext += count;
      return count;
    });
  }
  void Seek(long offset, int origin) override;
  long Mark() override { return static_cast<long>(Position()); }
  void Write(const unsigned char*, std::size_t) override {
    throw Failure("the input stream is read-only");
  }

  std::size_t Size() const { return fFile.Size(); }
  std::size_t Position() const { return fDiscarded + fNext; }
  SavedException& Saved() { return fSaved; }
  bool SkipSpace() {
    while (HasMore() && kSpace.find(fWindow[fNext]) != std::string_view::npos) ++fNext;
    return HasMore();
  }
  SyntaxError ErrorAt(std::size_t offset, const std::string& message) const {
    return {
        fFile.Name(), {fBefore, {fWindow.data(), fWindow.size()}}, offset - fDiscarded, message};
  }

 private:
  static constexpr std::string_view kSpace = " \t\r\n";
  static constexpr std::size_t kCapacity = 64 * 1024;
  static constexpr std::size_t kKept = 4 * 1024;  // for seeking back, and for excerpts

  // Returns whether there is a byte at the position.
  bool HasMore() {
    if (fNext == fWindow.size() && !fIsAtEnd) Refill();
    return fNext < fWindow.size();
  }
  void Refill();
  void Discard(std::size_t count);

  const InputFile fFile;
  Progress& fProgress;
  std::vector<char> fWindow;   // the bytes read last
  std::size_t fNext = 0;       // index in the window
  std::size_t fDiscarded = 0;  // bytes before the window
  LineCounter fBefore;         // counts the discarded bytes
  bool fIsAtEnd = false;
  SavedException fSaved;
};

void StreamInput::Client::Seek(long offset, int origin) {
  const long position = origin == KAP_T_MT::kKAPSeekFromPosition ? Mark() + offset : offset;
  const long place = position - static_cast<long>(fDiscarded);
  if (origin == KAP_T_MT::kKAPSeekFromEnd || place < 0 ||
      place > static_cast<long>(fWindow.size())) {
    throw Failure("the input stream cannot seek to that position");
  }
  fNext = static_cast<std::size_t>(place);
}

void StreamInput::Client::Refill() {
  if (fWindow.size() >= kCapacity) Discard(fWindow.size() - kKept);
  const std::size_t size = fWindow.size();
  fWindow.resize(kCapacity);
  std::size_t count = 0;
  try {
    count = fFile.Read(fWindow.data() + size, kCapacity - size);
  } catch (...) {
    fWindow.resize(size);  // else the reader would take the zeros for input
    throw;
  }
  fWindow.resize(size + count);
  fIsAtEnd = count == 0;
  fProgress.Advance(count);
  CheckTypeASize(fDiscarded + fWindow.size(), fFile.Name());
}

void StreamInput::Client::Discard(std::size_t count) {
  fBefore.Add({fWindow.data(), count});
  fWindow.erase(fWindow.begin(), fWindow.begin() + static_cast<std::ptrdiff_t>(count));
  fDiscarded += count;
  fNext -= count;
}

StreamInput::StreamInput(const std::string& fileName, Progress& progress)
    : StreamInput(KAP_T_MT::KAPNewClient<Client>(fileName, progress)) {}

StreamInput::StreamInput(KAP_T_MT::TKAPClientObject<Client> client)
    : fClient(client.get()), fStream(NewHostStream(std::move(client))) {}

std::size_t StreamInput::Size() const { return fClient->Size(); }

std::size_t StreamInput::Position() const { return fClient->Position(); }

void StreamInput::CheckFailure() { fClient->Saved().Rethrow(); }

bool StreamInput::SkipSpace() { return fClient->SkipSpace(); }

SyntaxError StreamInput::ErrorAt(std::size_t offset, const std::string& message) const {
  return fClient->ErrorAt(offset, message);
}

}  // namespace PosUtil
