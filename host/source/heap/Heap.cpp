// SPDX-License-Identifier: MIT
#include "heap/Heap.h"

#include <algorithm>
#include <cstring>

namespace KAPHost {

namespace {

// Adds a page with a block for this use to the heap. False when out of memory.
bool AddPage(ThreadHeap& heap, unsigned use) noexcept {
  if (AdoptPage(heap, use)) return true;
  Page* const page = gPagePool.Take();
  if (page) heap.AddEmpty(*page);
  return page;
}

}  // namespace

// Blocks that came back are looked for here and not in each call: once for about 4 KiB of blocks.
void* AllocateSlowly(unsigned use) noexcept {
  ThreadHeap* const heap = tHeap ? tHeap : StartHeap();
  if (heap) {
    CollectReturned(*heap);
    if (void* const block = heap->TakeSlowly(use)) return block;
    if (AddPage(*heap, use)) return heap->TakeSlowly(use);
  }
  return std::malloc(BlockSizeOf(use));
}

// A block of malloc stays one, however small it becomes: malloc resizes large blocks in place.
void* Resize(void* block, std::size_t size) noexcept {
  if (!block) return Allocate(size);
  if (!IsFromPage(block)) return std::realloc(block, size != 0 ? size : 1);  // 0 would free it
  const std::size_t before = Page::Of(block).fBlockSize;
  if (size <= before && size > before / 2) return block;
  void* const moved = Allocate(size);
  if (!moved) return size <= before ? block : nullptr;
  std::memcpy(moved, block, std::min(size, before));
  Deallocate(block);
  return moved;
}

}  // namespace KAPHost
