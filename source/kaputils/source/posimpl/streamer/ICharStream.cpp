// SPDX-License-Identifier: MIT
#include "posimpl/streamer/ICharStream.h"

#include "pos/POSException.h"

namespace NPOSStreamerImpl::NTypeAImpl {

using KAP_T_MT::POSException;

ICharStream::ICharStream(const KAP_T_MT::CKAPPositionableStream& stream) : fStream(stream) {}

ICharStream::~ICharStream() noexcept(false) {
  fFinishing.Run([this] { GiveBack(); });
}

// Positions are 32-bit numbers here, deliberately: documents end below 2 GiB.
void ICharStream::GiveBack() {
  const auto position = static_cast<std::uint32_t>(fStream.Mark());
  const auto unread = static_cast<std::uint32_t>(fEnd - fNext);
  fStream.Seek(static_cast<std::int32_t>(position - unread), KAP_T_MT::kKAPSeekFromStart);
}

void ICharStream::Refill() {
  const std::size_t count = fStream.Read(reinterpret_cast<unsigned char*>(fBytes), kCapacity);
  if (count == 0) throw POSException("unexpected EOF");
  fNext = fBytes;
  fEnd = fBytes + count;
}

bool ICharStream::GetSpecialChar(char* out, StreamParams::Meaning meaning) {
  switch (meaning) {
    case StreamParams::Meaning::kSpace:
      *out = ' ';
      return true;
    case StreamParams::Meaning::kBackslash:
      *out = '\0';
      *out = ReadEscape();
      return true;
    default:
      *out = Context().kClose;
      return false;
  }
}

// Digits are taken as they come, deliberately: 8 and 9 are accepted, the second and the third are
// not looked at, and the result is cut to a byte.
char ICharStream::ReadEscape() {
  const char escape = NextByte();
  if (escape >= '0' && escape <= '9') {
    const int second = static_cast<unsigned char>(NextByte());
    const int third = static_cast<unsigned char>(NextByte());
    return static_cast<char>((escape - '0') * 64 + (second - '0') * 8 + (third - '0'));
  }
  const EscapePair* pair = Context().FindLetter(escape);
  if (!pair) throw POSException("Unexpected escape sequence");
  return pair->fCharacter;
}

std::size_t ICharStream::GetChars(char* buf, std::size_t n, bool mustFill, bool skipWhitespace) {
  std::size_t count = 0;
  while (count < n && GetChar(buf + count)) {
    if (!skipWhitespace || !IsWhitespace(buf[count])) ++count;
  }
  if (count < n && mustFill) throw POSException("GetChars ran out of input");
  return count;
}

}  // namespace NPOSStreamerImpl::NTypeAImpl
