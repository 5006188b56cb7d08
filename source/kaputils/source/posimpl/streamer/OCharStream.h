#pragma once

#include <string_view>

#include "kap/KAPSharedBuff.h"
#include "kap/KAPStream.h"
#include "kapimpl/Finishing.h"
#include "posimpl/streamer/CharStream.h"

namespace NPOSStreamerImpl::NTypeAImpl {

// Writes characters to a stream: a full buffer at a time, and the rest when it is destroyed. The
// destructor raises when that fails, unless an exception is passing.
class OCharStream final : public CharStream {
 public:
  explicit OCharStream(const KAP_T_MT::CKAPPositionableStream& stream);
  ~OCharStream() noexcept(false);

  // A character of a value, escaped where the context asks for it.
  void PutChar(char ch) {
    const char letter = Context().HowToWrite(ch);
    if (letter == StreamParams::kPlain) return PutRaw(ch);
    PutEscaped(ch, letter);
  }
  // The same for each character up to the terminator.
  void PutText(const char* text);

  // What needs no escape, or must have none.
  void PutRaw(char ch) {
    if (fUsed == kCapacity) Flush();
    fBytes[fUsed++] = ch;
  }
  void PutRaw(std::string_view text) {
    for (const char ch : text) PutRaw(ch);
  }
  void PutRaw(char ch, std::size_t count) {
    for (; count > 0; --count) PutRaw(ch);
  }

  // The same, written in place: `write` puts at most `kSize` characters at the place that it is
  // given and returns their end.
  template <std::size_t kSize, class Write>
  void PutInPlace(Write write) {
    if (kSize <= kCapacity - fUsed) [[likely]] {
      fUsed = static_cast<std::size_t>(write(fBytes + fUsed) - fBytes);
    } else {
      char text[kSize];
      PutAcrossBlocks(std::string_view(text, write(text)));
    }
  }

 private:
  // Out of line, so that the ordinary case needs no registers saved.
  [[gnu::noinline]] void PutAcrossBlocks(std::string_view text);
  [[gnu::noinline]] void PutEscaped(char ch, char letter);
  [[gnu::noinline]] void Flush();

  KAP_T_MT::CKAPPositionableStream fStream;
  const KAP_T_MT::TKAPSharedBuffer<char> fBuffer{kCapacity};
  char* const fBytes = fBuffer.Data();
  std::size_t fUsed = 0;
  const Finishing fFinishing;
};

}  // namespace NPOSStreamerImpl::NTypeAImpl
