// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>
#include <utility>

#include "kap/KAPSharedBuff.h"
#include "kap/KAPStream.h"
#include "kapimpl/base/Finishing.h"
#include "kapimpl/base/Required.h"
#include "posimpl/base/BaseObject.h"
#include "posimpl/base/SortableStringAtom.h"
#include "posimpl/objects/Dict.h"
#include "posimpl/streamer/StreamParams.h"

namespace NPOSStreamerImpl::NTypeAImpl {

using NPOSObjectImpl::CPOSObject;
using NPOSObjectImpl::DictEntry;
using NPOSObjectImpl::SortableStringAtom;

class ContainerInUse;

// Writes characters to a stream: a full buffer at a time, and the rest when it is destroyed. The
// destructor throws when that fails, unless an exception is in flight. While the stream writes,
// everything that is in use keeps a reference.
class OCharStream {
 public:
  static constexpr std::size_t kCapacity = 512;

  explicit OCharStream(const KAP_T_MT::CKAPPositionableStream& stream);
  OCharStream(const OCharStream&) = delete;
  OCharStream& operator=(const OCharStream&) = delete;
  ~OCharStream() noexcept(false);

  // A value with the text up to the terminator as its content, escaped as `params` say. `owner`
  // owns the text and stays alive until all of it is written; without one, the caller sees to that.
  void PutText(const StreamParams& params, const char* text, POSObject* owner);

  // Characters written without escaping.
  void PutRaw(char ch) {
    if (fUsed == kCapacity) Flush();
    fBytes[fUsed++] = ch;
  }
  void PutRaw(std::string_view text);
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
      PutAcrossBlocks<kSize>(write);
    }
  }

  // How many characters the stream has taken.
  unsigned long CountWritten() const noexcept { return fWritten; }
  // Whether the value at work is inside this container.
  bool IsWriting(const POSObject* container) const noexcept;

 private:
  friend class ContainerInUse;
  friend class ScalarInUse;

  // Out of line, so that the ordinary case saves no registers and has no array on the stack, which
  // the compiler would guard.
  template <std::size_t kSize, class Write>
  [[gnu::noinline]] void PutAcrossBlocks(Write write) {
    char text[kSize];
    PutRaw(std::string_view(text, write(text)));
  }
  [[gnu::noinline]] void PutRestOfText(const StreamParams& params, const char* text,
                                       POSObject* owner, bool isWhole);
  [[gnu::noinline]] void PutEscaped(char ch, char letter);
  [[gnu::noinline]] void Flush();

  KAP_T_MT::CKAPPositionableStream fStream;
  const KAP_T_MT::TKAPSharedBuffer<char> fBuffer{kCapacity};
  char* const fBytes = Required(fBuffer.Data());
  std::size_t fUsed = 0;
  unsigned long fWritten = 0;
  ContainerInUse* fContainer = nullptr;  // the innermost
  POSObject* fScalar = nullptr;
  CPOSObject fKeptScalar;
  const Finishing fFinishing;
};

// What is being written, for the time of its writing. The stream may be a component's own, and its
// "Write" may then release the object. That can happen only when the buffer is written, so
// references are taken then and not before: nearly all objects are written without one.

// An array, or a dictionary with the entry at work.
class ContainerInUse {
 public:
  // What is referred to must stay until the next call of the stream.
  ContainerInUse(OCharStream& out, POSObject* container) noexcept
      : fOut(out), fOuter(std::exchange(out.fContainer, this)), fContainer(container) {}
  ContainerInUse(const ContainerInUse&) = delete;
  ContainerInUse& operator=(const ContainerInUse&) = delete;
  ~ContainerInUse() { fOut.fContainer = fOuter; }

  void Enter(const DictEntry& entry) noexcept { fEntry = &entry; }
  const char* Key() const noexcept { return fKept ? fKept->fKey.Text() : fEntry->GetKey().Text(); }
  POSObject* Value() const noexcept { return fKept ? fKept->fValue.Handle() : fEntry->Value(); }

  // Whether the stream has written since the entry was entered: then it may have changed the
  // container.
  bool IsKept() const noexcept { return fKept.has_value(); }
  // Gives up the entry, which may run a release procedure, and returns its key.
  SortableStringAtom Leave() noexcept {
    SortableStringAtom key = std::move(fKept->fKey);
    fEntry = nullptr;
    fKept.reset();
    return key;
  }

 private:
  friend class OCharStream;

  struct Entry {
    Entry(const SortableStringAtom& key, CPOSObject value) noexcept
        : fKey(key), fValue(std::move(value)) {}

    SortableStringAtom fKey;
    CPOSObject fValue;
  };

  bool IsComplete() const noexcept { return fKeptContainer && (!fEntry || fKept); }
  void Keep();

  OCharStream& fOut;
  ContainerInUse* const fOuter;
  POSObject* const fContainer;
  const DictEntry* fEntry = nullptr;
  CPOSObject fKeptContainer;
  std::optional<Entry> fKept;
};

// An object without others in it, whose bytes are read while the stream writes.
class ScalarInUse {
 public:
  ScalarInUse(OCharStream& out, POSObject* scalar) noexcept : fOut(out) { fOut.fScalar = scalar; }
  ScalarInUse(const ScalarInUse&) = delete;
  ScalarInUse& operator=(const ScalarInUse&) = delete;
  ~ScalarInUse() {
    fOut.fScalar = nullptr;
    if (fOut.fKeptScalar) [[unlikely]]
      fOut.fKeptScalar = CPOSObject();
  }

 private:
  OCharStream& fOut;
};

}  // namespace NPOSStreamerImpl::NTypeAImpl
