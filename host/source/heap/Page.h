// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "base/IntrusiveList.h"

namespace KAPHost {

class ThreadHeap;

// A free block links to the next one.
struct FreeBlock {
  FreeBlock* fNext;
};

inline constexpr std::size_t kPageSize = std::size_t{64} << 10;
inline constexpr std::size_t kExtentSize = std::size_t{4} << 20;
inline constexpr std::size_t kPagesPerExtent = kExtentSize / kPageSize;

// 64 KiB that are divided into blocks of one size. This is the record of a page. The records of an
// extent, 4 MiB of memory at a multiple of 4 MiB, are at its start, in place of its first page:
// record and page follow from the address of a block. Records at the start of each page would
// compete for the same few sets of the processor's cache.
//
// A page belongs to one thread, its owner, which takes blocks from it and puts blocks back without
// locked instructions. Other threads return blocks on a list of their own (HandOver.h).
//
// The two cache lines that the processor fetches together are one record's, and the one that other
// threads write is not the owner's.
//
// One free list for each thread and size, without pages, would be shorter. It would neither give
// memory back nor keep atoms apart from objects, whose owner would then wait for the other threads
// that use the atom. A shared library in place of malloc was slower and replaces the malloc of the
// whole process, which an embedded host must not do (docs/performance.md has the measurements).
struct alignas(128) Page {
  FreeBlock* fFree = nullptr;
  std::uint32_t fUsed = 0;           // blocks taken and neither put back nor collected
  std::uint32_t fFresh = kPageSize;  // where the bytes begin that were never part of a block
  std::uint32_t fBlockSize = kPageSize;
  std::uint8_t fUse = 0;  // index of kPageUses
  bool fIsFull = false;   // on the owner's list of full pages
  std::atomic<ThreadHeap*> fOwner{nullptr};
  ListLinks<Page> fLinks;

  alignas(64) std::atomic<FreeBlock*> fReturned{nullptr};
  Page* fNextReturned = nullptr;

  static Page& Of(void* block) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    auto* const pages = reinterpret_cast<Page*>(address & ~(kExtentSize - 1));
    // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn): no block lies in extent 0
    return pages[address / kPageSize % kPagesPerExtent];
  }
  unsigned char* Start() noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(this);
    return reinterpret_cast<unsigned char*>(address & ~(kExtentSize - 1)) +
           address % kExtentSize / sizeof(Page) * kPageSize;
  }

  // Makes an empty page one of blocks of this size.
  void Format(unsigned use, std::size_t blockSize) noexcept {
    fFree = nullptr;
    fUsed = 0;
    fFresh = 0;
    fBlockSize = static_cast<std::uint32_t>(blockSize);
    fUse = static_cast<std::uint8_t>(use);
    fIsFull = false;
  }
  // Null when no block is on the free list.
  FreeBlock* Take() noexcept {
    FreeBlock* const block = fFree;
    if (!block) return nullptr;
    fFree = block->fNext;
    ++fUsed;
    return block;
  }
  // Whether the owner must look at the page: it had no free block, or is empty now.
  bool Put(FreeBlock& block) noexcept {
    const bool hadNone = !fFree;
    block.fNext = fFree;
    fFree = &block;
    return --fUsed == 0 || hadNone;
  }
  // Divides the next fresh bytes into free blocks. False when there are none.
  bool Extend() noexcept;
  // Puts back what other threads have returned. Only for the one thread that knows of the list (see
  // HandOver.h).
  void Collect() noexcept;
};

static_assert(sizeof(Page) == 128 && kPagesPerExtent * sizeof(Page) <= kPageSize);

}  // namespace KAPHost
