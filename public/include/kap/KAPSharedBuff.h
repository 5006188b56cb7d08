// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "kap/KAPInterfaceClient.h"
#include "kap/KAPMemory.h"
#include "kap/KAPReference.h"
#include "kap/KAPSharedBuffInterface.h"
#include "kap/TOQException.h"

// Shared buffers: reference-counted blocks of bytes that cross the binder.
//
//   const TKAPSharedBuffer<float> samples(1000);   // zeroed
//   samples.Data()[0] = 1;
//   Play(samples.Handle());                        // another component adds its own reference
//
// Errors, besides those stated below: a table that cannot be loaded throws (KAPInterfaceClient.h).

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Typed calls of the host's shared buffers.
using KAPSharedBuffClient = TKAPInterfaceClient<KAPSharedBuffInterface>;

// The host's shared buffers, without types. Static only.
// Threads: any, except Close [binding thread].
class CKAPSharedBuff {
 public:
  // Loads the table if it is stale. Optional: the first use does the same.
  static void Init();
  // Drops the table: releasing a buffer makes no host call until the next use loads the table
  // again. A release alone does not load it. The end of the binding does the same. What is released
  // after the next load reaches the host again, so no buffer may outlive its host and the next
  // binding.
  static void Close() noexcept;

  // A new buffer of `size` bytes: one reference for the caller. With null `data` its storage is the
  // host's, zeroed. Otherwise the buffer takes over `data`, and its last release passes `data` to
  // `deleteProc`; so does NewBuffer itself when it throws, unless either of the two is null. The
  // host defines what `growProc` and `clientData` are for. Throws std::bad_alloc when the host
  // makes no buffer.
  static TKAPNewHandle<KAPSharedBuffer> NewBuffer(std::size_t size, void* data = nullptr,
                                                  KAPDeleteProc deleteProc = nullptr,
                                                  KAPGrowProc growProc = nullptr,
                                                  void* clientData = nullptr);

  static unsigned char* GetBuffer(
      KAPSharedBuffer* buffer);                         // borrowed: lives as long as the buffer
  static std::size_t GetSize(KAPSharedBuffer* buffer);  // in bytes
};

// Frees storage that came from CKAPMemory: a `deleteProc` for NewBuffer.
void KAPDeleteSharedBuff(void* storage) noexcept;

// The types accepted as an element count: integer types except bool and character types, which
// std::in_range rejects.
template <class Count>
concept KAPCount =
    std::integral<Count> && !std::same_as<Count, bool> && !std::same_as<Count, char> &&
    !std::same_as<Count, wchar_t> && !std::same_as<Count, char8_t> &&
    !std::same_as<Count, char16_t> && !std::same_as<Count, char32_t>;

// A reference to a shared buffer of plain elements, or to none.
// Ownership: holds one reference, released on destruction; copies share the buffer. Releasing it
//   before the binding, after the binding or after CKAPSharedBuff::Close does nothing, until the
//   table is loaded again (KAPClientTerminate).
// Errors: the constructor with a count throws what NewBuffer throws, and TOQException "Math
//   overflow exception" when the size does not fit.
// Threads: a plain value; the bytes of one buffer have no lock.
template <class T>
class TKAPSharedBuffer : public TKAPReference<KAPSharedBuffInterface, KAPSharedBuffer> {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  // No buffer.
  TKAPSharedBuffer() noexcept = default;
  using TKAPReference::TKAPReference;
  // Zeroed storage of the host for `count` elements; a count below 0 does not fit. A template, so
  // that 0 is a count and not a null handle.
  template <KAPCount Count>
  explicit TKAPSharedBuffer(Count count)
      : TKAPReference(CKAPSharedBuff::NewBuffer(SizeOf(count))) {}

  // One error, instead of a list of constructors that do not fit.
  template <class NoCount>
  requires(std::integral<NoCount> &&
           !KAPCount<NoCount>) explicit TKAPSharedBuffer(NoCount) = delete;

  // The elements, borrowed, and their number; null and 0 for no buffer. Whole elements only: bytes
  // at the end of a buffer from elsewhere may be left over. Data does not check the alignment: the
  // storage of a buffer from elsewhere must be aligned for T.
  T* Data() const {
    return Handle() ? reinterpret_cast<T*>(CKAPSharedBuff::GetBuffer(Handle())) : nullptr;
  }
  std::size_t Size() const { return Handle() ? CKAPSharedBuff::GetSize(Handle()) / sizeof(T) : 0; }

 private:
  template <KAPCount Count>
  static std::size_t SizeOf(Count count) {
    if (!std::in_range<std::size_t>(count)) KAPThrowMathOverflow();
    return KAPCheckedSize(static_cast<std::size_t>(count), sizeof(T));
  }
};

}  // namespace KAP_T_MT
