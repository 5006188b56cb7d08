// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

#include "kap/KAPSharedBuff.h"
#include "kap/KAPStream.h"
#include "kapimpl/base/Finishing.h"
#include "kapimpl/base/Required.h"
#include "posimpl/streamer/CharStream.h"

namespace NPOSStreamerImpl::NTypeAImpl {

// Reads characters from a stream, a buffer ahead. The destructor sets the stream to just after the
// last character that was read; it throws when that fails, unless an exception is in flight.
// POSException "unexpected EOF" when the stream ends.
class ICharStream final : public CharStream {
 public:
  explicit ICharStream(const KAP_T_MT::CKAPPositionableStream& stream);
  ~ICharStream() noexcept(false);

  // Puts the next character of the construct into `out` and returns true, or returns false when
  // that was the close character. POSException "Unexpected escape sequence".
  bool GetChar(char* out) {
    const char next = NextByte();
    *out = next;
    const StreamParams::Meaning meaning = Context().HowToRead(next);
    return meaning == StreamParams::Meaning::kItself || GetSpecialChar(out, meaning);
  }

  // Reads up to `n` characters of the construct into `buf` and returns how many; fewer when the
  // close character came, which is consumed: with `mustFill` that is a POSException "GetChars ran
  // out of input". With `skipWhitespace` white space is left out.
  std::size_t GetChars(char* buf, std::size_t n, bool mustFill, bool skipWhitespace);

  // The characters in the buffer that are not read yet, possibly none. They may be overwritten.
  std::span<char> AtHand() noexcept { return {fNext, fEnd}; }
  // Leaves out that many of them, or the white space that they begin with.
  void Skip(std::size_t count) noexcept { fNext += count; }
  void SkipWhitespace() noexcept {
    while (fNext != fEnd && IsWhitespace(*fNext)) ++fNext;
  }

 private:
  char NextByte() {
    if (fNext == fEnd) Refill();
    return *fNext++;
  }
  void Refill();
  bool GetSpecialChar(char* out, StreamParams::Meaning meaning);
  char ReadEscape();
  void GiveBack();

  KAP_T_MT::CKAPPositionableStream fStream;
  const KAP_T_MT::TKAPSharedBuffer<char> fBuffer{kCapacity};
  char* const fBytes = Required(fBuffer.Data());
  char* fNext = fBytes;
  char* fEnd = fBytes;
  const Finishing fFinishing;
};

}  // namespace NPOSStreamerImpl::NTypeAImpl
