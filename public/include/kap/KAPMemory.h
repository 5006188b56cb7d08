// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>

#include "kap/KAPTypes.h"

// Memory of the host, and owners of it. Objects that cross the binder live in host memory, so that
// whichever component releases them last can free them. Never mix it with the language's own
// allocator.
//
//   TKAPBlock<char> text = KAPNewBlock<char>(length + 1);  // freed with its owner
//   class Index : public KAPHostAllocated { ... };         // `new Index` asks the host
//
// Threads: any.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The host's allocator. Static only.
class CKAPMemory {
 public:
  // Loads the memory table if it is stale. Throws when it cannot be loaded, as any use of a table
  // does (KAPInterfaceClient.h).
  static void Init();

  // A block of at least `size` bytes, 16-byte aligned, not initialised; free it with Free. Never
  // null: throws std::bad_alloc when the host has no memory, and as Init does. `size` is not 0.
  [[nodiscard]] static void* Alloc(std::size_t size);
  // Resizes a block, which may move, and keeps the bytes that fit; for plain data. The block is
  // unchanged when it throws what Alloc throws. `block` is not null and `size` is not 0.
  [[nodiscard]] static void* Realloc(void* block, std::size_t size);
  // Frees a block; null is ignored. After the binding it does nothing: the host may be gone.
  static void Free(void* block) noexcept;

  // Throws std::bad_alloc, which the boundary turns into the host's memory error.
  [[noreturn]] static void ThrowMemError();
};

// count * size + header, in bytes. Throws TOQException "Math overflow exception" when the result
// does not fit. Every allocation whose size is computed goes through it.
std::size_t KAPCheckedSize(std::size_t count, std::size_t size, std::size_t header = 0);

// The deleter of TKAPBlock.
struct KAPFreeBlock {
  // Frees the block; null is ignored.
  void operator()(void* block) const noexcept { CKAPMemory::Free(block); }
};

// Owns a block of host memory that holds plain data; the block knows no element count.
template <class T>
using TKAPBlock = std::unique_ptr<T[], KAPFreeBlock>;

// The alignment of the host's blocks.
inline constexpr std::size_t kKAPBlockAlignment = 16;

// A block for `count` elements, not initialised. A null owner, without a host call, for a count of
// 0. Throws what CKAPMemory::Alloc and KAPCheckedSize throw.
template <class T>
[[nodiscard]] TKAPBlock<T> KAPNewBlock(std::size_t count) {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
  static_assert(alignof(T) <= kKAPBlockAlignment, "a block of the host is aligned to 16 bytes");
  if (count == 0) return nullptr;
  return TKAPBlock<T>(static_cast<T*>(CKAPMemory::Alloc(KAPCheckedSize(count, sizeof(T)))));
}

// A terminated copy of a text, for procedures that take one: on the stack when the text is short,
// else in host memory.
// Errors: TOQException "a text cannot hold a zero byte" for one that does, since the procedure
//   would not see what follows it; what KAPNewBlock throws for a long text.
// Threads: a plain value.
class KAPTerminatedText {
 public:
  // Copies the text.
  explicit KAPTerminatedText(std::string_view text);
  KAPTerminatedText(const KAPTerminatedText&) = delete;
  KAPTerminatedText& operator=(const KAPTerminatedText&) = delete;

  const char* Text() const noexcept { return fLong ? fLong.get() : fShort; }  // lives as long

 private:
  char fShort[128];  // most keys and paths fit
  TKAPBlock<char> fLong;
};

// Base of classes whose objects live in host memory: `new` asks the host, `delete` returns the
// block to it, also when a constructor throws. The size of an array of objects has no checked
// computation here, so `new[]` does not compile. Nor does `new` of a class with an
// alignment above that of the host's blocks.
class KAPHostAllocated {
 public:
  // Throw and ignore what CKAPMemory::Alloc and Free do. The placement forms are for containers.
  static void* operator new(std::size_t size) { return CKAPMemory::Alloc(size); }
  static void operator delete(void* block) noexcept { CKAPMemory::Free(block); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void*, void*) noexcept {}
  static void* operator new[](std::size_t) = delete;
  static void* operator new(std::size_t, std::align_val_t) = delete;

 protected:
  ~KAPHostAllocated() = default;
};

}  // namespace KAP_T_MT
