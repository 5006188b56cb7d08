// SPDX-License-Identifier: MIT
#include "posimpl/streamer/OCharStream.h"

#include <algorithm>
#include <cstring>

namespace NPOSStreamerImpl::NTypeAImpl {

OCharStream::OCharStream(const KAP_T_MT::CKAPPositionableStream& stream) : fStream(stream) {}

OCharStream::~OCharStream() noexcept(false) {
  fFinishing.Run([this] {
    if (fUsed != 0) Flush();
  });
}

// The bytes leave the buffer once the stream has taken them: after a failure they are written again
// at the end. Everything outside a kept entry is already kept.
void OCharStream::Flush() {
  if (fScalar && !fKeptScalar) fKeptScalar = NPOSObjectImpl::BaseObject::Share(fScalar);
  for (ContainerInUse* use = fContainer; use && !use->IsComplete(); use = use->fOuter) use->Keep();
  fStream.Write(reinterpret_cast<const unsigned char*>(fBytes), fUsed);
  fWritten += fUsed;
  fUsed = 0;
}

void ContainerInUse::Keep() {
  if (!fKeptContainer) fKeptContainer = NPOSObjectImpl::BaseObject::Share(fContainer);
  if (!fEntry) return;
  fKept.emplace(fEntry->GetKey(), NPOSObjectImpl::BaseObject::Share(fEntry->Value()));
}

bool OCharStream::IsWriting(const POSObject* container) const noexcept {
  const ContainerInUse* use = fContainer;
  while (use && use->fContainer != container) use = use->fOuter;
  return use != nullptr;
}

// Most texts fit into the buffer and need no escapes. While they are copied nothing else can run,
// so the owner is not even mentioned to the stream: that took a tenth of the time of a record.
void OCharStream::PutText(const StreamParams& params, const char* text, POSObject* owner) {
  char* place = fBytes + fUsed;
  char* const end = fBytes + kCapacity;
  const bool hasRoom = place != end;
  if (hasRoom) *place++ = params.kOpen;
  while (place != end && params.HowToWrite(*text) == StreamParams::kPlain) *place++ = *text++;
  if (place == end || *text != '\0') [[unlikely]] {
    fUsed = static_cast<std::size_t>(place - fBytes);
    return PutRestOfText(params, text, owner, !hasRoom);
  }
  *place++ = params.kClose;
  fUsed = static_cast<std::size_t>(place - fBytes);
}

void OCharStream::PutRestOfText(const StreamParams& params, const char* text, POSObject* owner,
                                bool isWhole) {
  std::optional<ScalarInUse> inUse;
  if (owner) inUse.emplace(*this, owner);
  if (isWhole) PutRaw(params.kOpen);
  for (; *text != '\0'; ++text) {
    const char letter = params.HowToWrite(*text);
    if (letter == StreamParams::kPlain) [[likely]] {
      PutRaw(*text);
    } else {
      PutEscaped(*text, letter);
    }
  }
  PutRaw(params.kClose);
}

void OCharStream::PutRaw(std::string_view text) {
  while (!text.empty()) {
    if (fUsed == kCapacity) Flush();
    const std::size_t count = std::min(text.size(), kCapacity - fUsed);
    std::memcpy(fBytes + fUsed, text.data(), count);
    fUsed += count;
    text.remove_prefix(count);
  }
}

void OCharStream::PutEscaped(char ch, char letter) {
  PutRaw('\\');
  if (letter != StreamParams::kOctal) return PutRaw(letter);
  const auto byte = static_cast<unsigned char>(ch);
  for (int shift = 6; shift >= 0; shift -= 3) PutRaw(static_cast<char>('0' + (byte >> shift & 7)));
}

}  // namespace NPOSStreamerImpl::NTypeAImpl
