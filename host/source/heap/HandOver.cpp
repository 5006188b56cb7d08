// SPDX-License-Identifier: MIT
#include "heap/HandOver.h"

#include <mutex>
#include <new>

#include "base/ThreadEnd.h"
#include "heap/PagePool.h"

namespace KAPHost {

namespace {

constexpr std::size_t kMostKept = 256;  // 16 MiB for each thread

constinit std::mutex gMutex;
constinit ThreadHeap gOrphans(0);       // guarded by gMutex
constinit ThreadHeap* gIdle = nullptr;  // heaps without a thread, guarded by gMutex

void CollectInto(ThreadHeap& heap, Page& page) noexcept {
  page.Collect();
  heap.File(page);
}

// Collects an orphan's returned blocks, as the party that knows of them, and adopts it if the
// thread has a heap. False when the page is not an orphan any more.
bool CollectOrphan(Page& page) noexcept {
  {
    const std::lock_guard lock(gMutex);
    if (page.fOwner.load(std::memory_order_relaxed) != &gOrphans) return false;
    page.Collect();
    if (page.fUsed != 0) {
      if (tHeap) {
        gOrphans.Remove(page);
        tHeap->AddUsed(page);
      } else {
        gOrphans.File(page);
      }
      return true;
    }
    gOrphans.Remove(page);
  }
  gPagePool.Put(page);  // calls the system, so without the lock
  return true;
}

// Makes the owner of each page of a list know of its returned blocks.
//
// The owner may change until the page is on its stack. The second look at the owner notices: a
// change is followed by taking the former owner's whole stack. If that took this page, it is known.
// If not, it came before the push, so the push has read what it left on the stack and the look at
// the owner sees the change. Then the stack may belong to no thread, so this one takes it.
void Notify(Page* pages) noexcept {
  while (pages) {
    Page& page = *pages;
    pages = page.fNextReturned;
    ThreadHeap* const owner = page.fOwner.load(std::memory_order_acquire);
    if (owner == &gOrphans) {
      if (CollectOrphan(page)) continue;
      page.fNextReturned = pages;
      pages = &page;
      continue;
    }
    owner->PushReturned(page);
    if (page.fOwner.load(std::memory_order_acquire) == owner) continue;
    for (Page* taken = owner->TakeReturned(); taken;) {
      Page& next = *taken;
      taken = next.fNextReturned;
      next.fNextReturned = pages;
      pages = &next;
    }
  }
}

// A late push finds its way: the pages become orphans before the stack is taken (see Notify). The
// empty pages go to the pool without the lock, because the pool calls the system.
void EndHeap(void* ended) noexcept {
  auto& heap = *static_cast<ThreadHeap*>(ended);
  tHeap = nullptr;
  Page* returned = nullptr;
  Page* empty = nullptr;
  {
    const std::lock_guard lock(gMutex);
    empty = heap.MoveAll(gOrphans);
    returned = heap.TakeReturned();
    heap.fNextIdle = gIdle;
    gIdle = &heap;
  }
  gPagePool.PutAll(empty);
  Notify(returned);
}

// Heaps are never deleted: a late push may reach one whose thread has ended.
ThreadHeap* TakeIdle() noexcept {
  const std::lock_guard lock(gMutex);
  ThreadHeap* const heap = gIdle;
  if (heap) gIdle = heap->fNextIdle;
  return heap;
}

}  // namespace

// Who finds the list empty comes after the party that emptied it, which has read the page's link.
void ReturnBlock(Page& page, FreeBlock& block) noexcept {
  FreeBlock* first = page.fReturned.load(std::memory_order_relaxed);
  do {
    block.fNext = first;
  } while (!page.fReturned.compare_exchange_weak(first, &block, std::memory_order_acq_rel,
                                                 std::memory_order_relaxed));
  if (first) return;
  page.fNextReturned = nullptr;
  Notify(&page);
}

void CollectReturned(ThreadHeap& heap) noexcept {
  if (!heap.HasReturned()) return;
  Page* others = nullptr;  // that came by a late push
  for (Page* taken = heap.TakeReturned(); taken;) {
    Page& page = *taken;
    taken = page.fNextReturned;
    if (page.fOwner.load(std::memory_order_acquire) == &heap) {
      CollectInto(heap, page);
    } else {
      page.fNextReturned = others;
      others = &page;
    }
  }
  Notify(others);
}

ThreadHeap* StartHeap() noexcept {
  ThreadHeap* heap = TakeIdle();
  if (!heap) heap = new (std::nothrow) ThreadHeap(kMostKept);
  if (!heap) return nullptr;
  tHeap = heap;
  if (CallAtThreadEnd<&EndHeap>(heap)) return heap;
  EndHeap(heap);
  return nullptr;
}

bool AdoptPage(ThreadHeap& heap, unsigned use) noexcept {
  const std::lock_guard lock(gMutex);
  Page* const page = gOrphans.Available(use);
  if (!page) return false;
  gOrphans.Remove(*page);
  heap.AddUsed(*page);
  return true;
}

// No thread nests the two.
void LockPages() noexcept {
  gMutex.lock();
  gPagePool.Mutex().lock();
}

void UnlockPages() noexcept {
  gPagePool.Mutex().unlock();
  gMutex.unlock();
}

}  // namespace KAPHost
