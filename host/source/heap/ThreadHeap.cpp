// SPDX-License-Identifier: MIT
#include "heap/ThreadHeap.h"

#include <utility>

#include "heap/PagePool.h"

namespace KAPHost {

constinit Page gNoPage;

void* ThreadHeap::TakeSlowly(unsigned use) noexcept {
  Page* const current = fCurrent[use];
  if (!current->fFree && !current->Extend() && !NextPage(use)) return nullptr;
  return fCurrent[use]->Take();
}

// Makes another page with a block the current one.
bool ThreadHeap::NextPage(unsigned use) noexcept {
  Page* next = fAvailable[use].First();
  if (next) {
    fAvailable[use].Remove(*next);
  } else {
    next = fKept;
    if (!next) return false;
    fKept = next->fLinks.fNext;
    --fKeptCount;
    next->Format(use, BlockSizeOf(use));
  }
  if (!next->fFree) next->Extend();
  Page& full = *fCurrent[use];
  fCurrent[use] = next;
  if (&full == &gNoPage) return true;
  full.fIsFull = true;
  fFull.Append(full);
  return true;
}

void ThreadHeap::File(Page& page) noexcept {
  if (fCurrent[page.fUse] == &page) return;
  if (page.fUsed == 0) {
    Remove(page);
    Keep(page);
  } else if (page.fIsFull) {
    Remove(page);
    AddUsed(page);
  }
}

void ThreadHeap::AddEmpty(Page& page) noexcept {
  page.fOwner.store(this, std::memory_order_release);
  page.fLinks.fNext = fKept;
  fKept = &page;
  ++fKeptCount;
}

// A page without a free block but with fresh bytes counts as full until a block comes back.
void ThreadHeap::AddUsed(Page& page) noexcept {
  page.fOwner.store(this, std::memory_order_release);
  page.fIsFull = !page.fFree;
  (page.fIsFull ? fFull : fAvailable[page.fUse]).Append(page);
}

void ThreadHeap::Remove(Page& page) noexcept {
  (page.fIsFull ? fFull : fAvailable[page.fUse]).Remove(page);
}

void ThreadHeap::Keep(Page& page) noexcept {
  if (fKeptCount < fMostKept) return AddEmpty(page);
  gPagePool.Put(page);
}

Page* ThreadHeap::MoveAll(ThreadHeap& heir) noexcept {
  Page* empty = std::exchange(fKept, nullptr);
  fKeptCount = 0;
  const auto move = [&](Page& page) {
    if (page.fUsed != 0) return heir.AddUsed(page);
    page.fLinks.fNext = std::exchange(empty, &page);
  };
  const auto moveList = [&](IntrusiveList<Page>& pages) {
    while (Page* const page = pages.First()) {
      pages.Remove(*page);
      move(*page);
    }
  };
  for (Page*& current : fCurrent) {
    if (current != &gNoPage) move(*current);
    current = &gNoPage;
  }
  for (auto& pages : fAvailable) moveList(pages);
  moveList(fFull);
  return empty;
}

void ThreadHeap::PushReturned(Page& page) noexcept {
  Page* first = fReturned.load(std::memory_order_relaxed);
  do {
    page.fNextReturned = first;
  } while (!fReturned.compare_exchange_weak(first, &page, std::memory_order_acq_rel,
                                            std::memory_order_relaxed));
}

}  // namespace KAPHost
