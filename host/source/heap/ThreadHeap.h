// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>

#include "heap/Page.h"
#include "heap/SizeClass.h"

namespace KAPHost {

// The page of a heap without pages: it has no block, and nothing ever changes it.
extern constinit Page gNoPage;

// The pages that one thread owns. Only the owner calls its members, with the exception of the stack
// of returned pages.
//
// Of each use there is one current page, from which blocks are taken. The others are full or have
// free blocks. Pages that become empty are kept for any use: a thread that gave them all back would
// trade pages with other threads and pull their contents from one processor's cache to the other's.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): what other threads write stands apart
class alignas(128) ThreadHeap {
 public:
  // Keeps at most so many empty pages.
  explicit constexpr ThreadHeap(std::size_t mostKept) : fMostKept(mostKept) {
    fCurrent.fill(&gNoPage);
  }
  ThreadHeap(const ThreadHeap&) = delete;
  ThreadHeap& operator=(const ThreadHeap&) = delete;

  // Null when the current page has no free block.
  void* Take(unsigned use) noexcept { return fCurrent[use]->Take(); }
  // The size of the blocks of the page that Take has just taken from.
  std::size_t TakenSize(unsigned use) const noexcept { return fCurrent[use]->fBlockSize; }
  // The same, from any page of the heap, empty ones included. Null when none has a block.
  void* TakeSlowly(unsigned use) noexcept;

  void Put(Page& page, FreeBlock& block) noexcept {
    if (page.Put(block)) File(page);
  }
  // Puts a page where it belongs that has more free blocks than before.
  void File(Page& page) noexcept;

  // Adds a page that belongs to no heap: an empty one, one with blocks.
  void AddEmpty(Page& page) noexcept;
  void AddUsed(Page& page) noexcept;
  // Removes a page with blocks.
  void Remove(Page& page) noexcept;
  // Removes all pages: those with blocks go to `heir`. Returns the empty ones, linked by
  // fLinks.fNext.
  Page* MoveAll(ThreadHeap& heir) noexcept;

  // A page with a free block for this use, except the current one; null when there is none.
  Page* Available(unsigned use) const noexcept { return fAvailable[use].First(); }

  // The stack of pages to which other threads have returned blocks, linked by fNextReturned. Any
  // thread may push and take.
  void PushReturned(Page& page) noexcept;
  // Always an exchange: Notify relies on its place among the pushes, which a mere look that finds
  // the stack empty does not have.
  Page* TakeReturned() noexcept { return fReturned.exchange(nullptr, std::memory_order_acq_rel); }
  // What the owner may look at before it takes the stack.
  bool HasReturned() const noexcept { return fReturned.load(std::memory_order_relaxed); }

  ThreadHeap* fNextIdle = nullptr;

 private:
  void Keep(Page& page) noexcept;
  bool NextPage(unsigned use) noexcept;

  std::array<Page*, kPageUses> fCurrent{};
  std::array<IntrusiveList<Page>, kPageUses> fAvailable;
  IntrusiveList<Page> fFull;
  Page* fKept = nullptr;  // empty pages, linked by fLinks.fNext
  std::size_t fKeptCount = 0;
  const std::size_t fMostKept;

  alignas(128) std::atomic<Page*> fReturned{nullptr};
};

[[gnu::visibility("hidden")]] inline thread_local constinit ThreadHeap* tHeap = nullptr;

}  // namespace KAPHost
