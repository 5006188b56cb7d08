// SPDX-License-Identifier: MIT
#pragma once

#include <malloc.h>

#include <cstdlib>

#include "heap/HandOver.h"
#include "heap/PagePool.h"
#include "heap/ThreadHeap.h"

// The host's own allocator, for the blocks of components, container records and atoms. Small blocks
// come from pages of the calling thread, without locked instructions; all others, and all while
// pages are switched off, from malloc. A block is freed the way it was made, whatever the switch
// says by then. Any thread may free any block.

namespace KAPHost {

// The largest size of blocks from pages; 0 while pages are off, as they are before the first host.
[[gnu::visibility("hidden")]] inline constinit std::atomic<std::size_t> gLargestPaged{0};

inline void UsePages(bool use) noexcept { gLargestPaged = use ? kLargestSmall : 0; }

void* AllocateSlowly(unsigned use) noexcept;

inline bool IsPaged(std::size_t size) noexcept {
  return size - 1 < gLargestPaged.load(std::memory_order_relaxed);
}

// A block of at least `size` bytes, 16-byte aligned; null when out of memory. A size of 0 also
// returns a block.
inline void* Allocate(std::size_t size, BlockKind kind = BlockKind::kOwn) noexcept {
  if (!IsPaged(size)) [[unlikely]]
    return std::malloc(size);
  const unsigned use = PageUseOf(kind, size);
  ThreadHeap* const heap = tHeap;
  void* const block = heap ? heap->Take(use) : nullptr;
  return block ? block : AllocateSlowly(use);
}

struct SizedBlock {
  void* fBlock;
  std::size_t fSize;  // usable
};

// A block that is at hand: null also when Allocate finds one. Calls nothing, so that the procedures
// that try it first and call Allocate as the last thing they do save no registers.
inline SizedBlock TakeAtHand(std::size_t size) noexcept {
  ThreadHeap* const heap = tHeap;
  if (!heap || !IsPaged(size)) [[unlikely]]
    return {};
  const unsigned use = PageUseOf(BlockKind::kOwn, size);
  return {heap->Take(use), heap->TakenSize(use)};
}

inline void FreeToPage(Page& page, void* block) noexcept {
  ThreadHeap* const owner = page.fOwner.load(std::memory_order_relaxed);
  auto& freed = *static_cast<FreeBlock*>(block);
  owner == tHeap ? owner->Put(page, freed) : ReturnBlock(page, freed);
}

// Null is ignored.
inline void Deallocate(void* block) noexcept {
  IsFromPage(block) ? FreeToPage(Page::Of(block), block) : std::free(block);
}

// Resizes a block, which may move, and keeps the bytes that fit. Null when out of memory: the block
// is unchanged.
void* Resize(void* block, std::size_t size) noexcept;

// The usable size; 0 for null.
inline std::size_t UsableSize(void* block) noexcept {
  return IsFromPage(block) ? Page::Of(block).fBlockSize : malloc_usable_size(block);
}

}  // namespace KAPHost
