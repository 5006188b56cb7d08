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
inline constinit std::atomic<std::size_t> gLargestPaged{0};

inline void UsePages(bool use) noexcept { gLargestPaged = use ? kLargestSmall : 0; }

void* AllocateSlowly(unsigned use) noexcept;

// A block of at least `size` bytes, 16-byte aligned; null when out of memory. A size of 0 also
// returns a block.
inline void* Allocate(std::size_t size, BlockKind kind = BlockKind::kOwn) noexcept {
  if (size - 1 >= gLargestPaged.load(std::memory_order_relaxed)) return std::malloc(size);
  const unsigned use = PageUseOf(kind, size);
  ThreadHeap* const heap = tHeap;
  void* const block = heap ? heap->Take(use) : nullptr;
  return block ? block : AllocateSlowly(use);
}

inline void FreeFromPage(void* block) noexcept {
  Page& page = Page::Of(block);
  ThreadHeap* const owner = page.fOwner.load(std::memory_order_relaxed);
  auto& freed = *static_cast<FreeBlock*>(block);
  owner == tHeap ? owner->Put(page, freed) : ReturnBlock(page, freed);
}

// Null is ignored.
inline void Deallocate(void* block) noexcept {
  IsFromPage(block) ? FreeFromPage(block) : std::free(block);
}

// Resizes a block, which may move, and keeps the bytes that fit. Null when out of memory: the block
// is unchanged.
void* Resize(void* block, std::size_t size) noexcept;

// The usable size; 0 for null.
inline std::size_t UsableSize(void* block) noexcept {
  return IsFromPage(block) ? Page::Of(block).fBlockSize : malloc_usable_size(block);
}

}  // namespace KAPHost
