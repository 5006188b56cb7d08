#pragma once

#include <optional>
#include <string_view>
#include <utility>

#include "kap/KAPSharedBuff.h"
#include "kap/KAPStream.h"
#include "kapimpl/base/Finishing.h"
#include "posimpl/base/BaseObject.h"
#include "posimpl/base/SortableStringAtom.h"
#include "posimpl/streamer/CharStream.h"

namespace NPOSStreamerImpl::NTypeAImpl {

using NPOSObjectImpl::CPOSObject;
using NPOSObjectImpl::SortableStringAtom;

class InUse;

// Writes characters to a stream: a full buffer at a time, and the rest when it is destroyed. The
// destructor throws when that fails, unless an exception is in flight. While the stream writes,
// everything that is in use keeps a reference.
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

  // Characters written without escaping.
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

  // How many characters the stream has taken.
  unsigned long CountWritten() const noexcept { return fWritten; }

 private:
  friend class InUse;

  // Out of line, so that the ordinary case saves no registers.
  [[gnu::noinline]] void PutAcrossBlocks(std::string_view text);
  [[gnu::noinline]] void PutEscaped(char ch, char letter);
  [[gnu::noinline]] void Flush();

  KAP_T_MT::CKAPPositionableStream fStream;
  const KAP_T_MT::TKAPSharedBuffer<char> fBuffer{kCapacity};
  char* const fBytes = fBuffer.Data();
  std::size_t fUsed = 0;
  unsigned long fWritten = 0;
  InUse* fInUse = nullptr;  // the innermost
  const Finishing fFinishing;
};

// An object, with or without its key in a dictionary, for the time that it is being written. The
// stream may be a component's own, and its "Write" may then release the object. That can happen
// only when the buffer is written, so a reference is taken then and not before: nearly all objects
// are written without one.
class InUse {
 public:
  // What is referred to must stay until the next call of the stream.
  InUse(OCharStream& out, const CPOSObject& object, const SortableStringAtom* key) noexcept
      : fOut(out), fOuter(std::exchange(out.fInUse, this)), fObject(&object), fKey(key) {}
  InUse(const InUse&) = delete;
  InUse& operator=(const InUse&) = delete;
  ~InUse() { fOut.fInUse = fOuter; }

  const CPOSObject& Object() const noexcept { return *fObject; }
  const SortableStringAtom& Key() const noexcept { return *fKey; }
  // Whether the stream has written meanwhile, and may have changed the container.
  bool IsKept() const noexcept { return fIsKept; }

 private:
  friend class OCharStream;

  void Keep();

  OCharStream& fOut;
  InUse* const fOuter;
  const CPOSObject* fObject;
  const SortableStringAtom* fKey;
  bool fIsKept = false;
  CPOSObject fKeptObject;
  std::optional<SortableStringAtom> fKeptKey;
};

}  // namespace NPOSStreamerImpl::NTypeAImpl
