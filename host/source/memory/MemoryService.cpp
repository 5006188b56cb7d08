// SPDX-License-Identifier: MIT
#include "accounting/Accounting.h"
#include "binder/Registration.h"
#include "heap/Heap.h"
#include "kap/KAPMemoryInterface.h"

// The procedures of KAPMemoryInterface.

namespace KAPHost {

namespace {

long SizeOf(void* block) noexcept { return static_cast<long>(UsableSize(block)); }

[[gnu::noinline]] void* AllocSlowly(std::size_t size) noexcept {
  void* const block = Allocate(size);
  if (block) Count(KAPResource::kBlock, 1, SizeOf(block));
  return block;
}

void* Alloc(std::size_t size) noexcept {
  ThreadAccount* const account = tAccount;
  if (!account) [[unlikely]]
    return AllocSlowly(size);
  const auto [block, usable] = TakeAtHand(size);
  if (!block) [[unlikely]]
    return AllocSlowly(size);
  account->Add(SlotOf(KAPResource::kBlock), 1, static_cast<long>(usable));
  return block;
}

void* Realloc(void* block, std::size_t size) noexcept {
  const long before = SizeOf(block);
  void* const resized = Resize(block, size);
  if (resized) Count(KAPResource::kBlock, block ? 0 : 1, SizeOf(resized) - before);
  return resized;
}

[[gnu::noinline]] void FreeSlowly(void* block) noexcept {
  Count(KAPResource::kBlock, -1, -SizeOf(block));
  Deallocate(block);
}

void Free(void* block) noexcept {
  if (!block) return;
  ThreadAccount* const account = tAccount;
  if (!account || !IsFromPage(block)) [[unlikely]]
    return FreeSlowly(block);
  Page& page = Page::Of(block);
  account->Add(SlotOf(KAPResource::kBlock), -1, -static_cast<long>(page.fBlockSize));
  FreeToPage(page, block);
}

std::size_t GetBlockSize(void* block) noexcept { return UsableSize(block); }

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPMemoryInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPMemoryInterface, &Alloc, &Realloc, &Free, &GetBlockSize>(binder);
}

}  // namespace KAPHost
