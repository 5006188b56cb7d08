// SPDX-License-Identifier: MIT
#include "accounting/Accounting.h"
#include "binder/Registration.h"
#include "heap/Heap.h"
#include "kap/KAPMemoryInterface.h"

// The procedures of KAPMemoryInterface.

namespace KAPHost {

namespace {

long SizeOf(void* block) noexcept { return static_cast<long>(UsableSize(block)); }

void* Alloc(std::size_t size) noexcept {
  void* const block = Allocate(size);
  if (block) Count(KAPResource::kBlock, 1, SizeOf(block));
  return block;
}

void* Realloc(void* block, std::size_t size) noexcept {
  const long before = SizeOf(block);
  void* const resized = Resize(block, size);
  if (resized) Count(KAPResource::kBlock, block ? 0 : 1, SizeOf(resized) - before);
  return resized;
}

void Free(void* block) noexcept {
  if (!block) return;
  Count(KAPResource::kBlock, -1, -SizeOf(block));
  Deallocate(block);
}

std::size_t GetBlockSize(void* block) noexcept { return UsableSize(block); }

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPMemoryInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPMemoryInterface, &Alloc, &Realloc, &Free, &GetBlockSize>(binder);
}

}  // namespace KAPHost
