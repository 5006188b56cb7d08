#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>

// Memory of the host, and owners of it. Storage from it is never mixed with the language's own
// allocator.
//
//   TKAPBlock<char> text = KAPNewBlock<char>(length + 1);   // freed with its owner

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Static only. Any thread.
class CKAPMemory {
 public:
  // Loads the memory table if it is stale; throws as any use of it (KAPInterfaceClient.h).
  static void Init();

  // A block of at least `size` bytes, 16-byte aligned, to be freed with Free. Never null: throws
  // std::bad_alloc when the host has no memory. Do not ask for 0 bytes.
  static void* Alloc(std::size_t size);
  static void Free(void* block) noexcept;  // null is ignored

  // Throws std::bad_alloc, which the boundary turns into the host's memory error.
  [[noreturn]] static void ThrowMemError();
};

// count * size + header in bytes; throws TOQException "Math overflow exception" when that does not
// fit.
std::size_t KAPCheckedSize(std::size_t count, std::size_t size, std::size_t header = 0);

struct KAPFreeBlock {
  void operator()(void* block) const noexcept { CKAPMemory::Free(block); }
};

// Owns a block of host memory that holds plain data.
template <class T>
using TKAPBlock = std::unique_ptr<T[], KAPFreeBlock>;

// A block for `count` elements, not initialised; empty for none. Throws what Alloc and
// KAPCheckedSize throw.
template <class T>
TKAPBlock<T> KAPNewBlock(std::size_t count) {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
  if (count == 0) return nullptr;
  return TKAPBlock<T>(static_cast<T*>(CKAPMemory::Alloc(KAPCheckedSize(count, sizeof(T)))));
}

// Base of classes whose objects live in host memory: `new` asks the host, and the block is freed
// when a constructor throws.
class KAPHostAllocated {
 public:
  static void* operator new(std::size_t size) { return CKAPMemory::Alloc(size); }
  static void operator delete(void* block) noexcept { CKAPMemory::Free(block); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void*, void*) noexcept {}
  static void* operator new[](std::size_t) = delete;

 protected:
  ~KAPHostAllocated() = default;
};

}  // namespace KAP_T_MT
