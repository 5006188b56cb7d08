// SPDX-License-Identifier: MIT
#include "heap/PagePool.h"

#include <sys/mman.h>
#include <sys/resource.h>

#include <new>

namespace KAPHost {

constinit PagePool gPagePool;

namespace {

Page* Pop(Page*& pages) noexcept {
  Page* const page = pages;
  if (page) pages = page->fLinks.fNext;
  return page;
}

void Push(Page*& pages, Page& page) noexcept {
  page.fLinks.fNext = pages;
  pages = &page;
}

// A limit would count the reserved addresses as memory.
bool HasUnlimitedAddresses() noexcept {
  rlimit limit{};
  return getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur == RLIM_INFINITY;
}

}  // namespace

Page* PagePool::Take() noexcept {
  const std::lock_guard lock(fMutex);
  if (Page* const warm = Pop(fWarm)) {
    --fWarmCount;
    return warm;
  }
  if (Page* const cold = Pop(fCold)) return cold;
  return NewPage();
}

void PagePool::Put(Page& page) noexcept {
  if (PutWarm(page)) return;
  // The system takes the memory when it runs short. To give it away at once costs more: clearing
  // what is used again soon took a third of the time of a document of a million values.
  //
  // Without the lock: it takes microseconds. Should it fail, the page merely keeps its memory.
  madvise(page.Start(), kPageSize, MADV_FREE);
  const std::lock_guard lock(fMutex);
  Push(fCold, page);
}

void PagePool::PutAll(Page* pages) noexcept {
  while (Page* const page = Pop(pages)) Put(*page);
}

bool PagePool::PutWarm(Page& page) noexcept {
  const std::lock_guard lock(fMutex);
  if (fWarmCount == kMostWarm) return false;
  ++fWarmCount;
  Push(fWarm, page);
  return true;
}

Page* PagePool::NewPage() noexcept {
  if (fNewTaken == kPagesPerExtent && !NewExtent()) return nullptr;
  return new (fNew + fNewTaken++) Page;
}

// Makes the next part of the region usable. The rest stays inaccessible, and thus out of core files
// and of the system's account of promised memory.
bool PagePool::NewExtent() noexcept {
  if (!Reserve() || fNextExtent == kRegionSize) return false;
  void* const extent =
      reinterpret_cast<void*>(gRegion.load(std::memory_order_relaxed) + fNextExtent);
  if (mprotect(extent, kExtentSize, PROT_READ | PROT_WRITE) != 0) return false;
  fNextExtent += kExtentSize;
  fNew = static_cast<Page*>(extent);
  fNewTaken = 1;  // the records are in place of the first page
  return true;
}

bool PagePool::Reserve() noexcept {
  if (fIsReserved) return gRegion.load(std::memory_order_relaxed) != kNoRegion;
  fIsReserved = true;  // a failure is final: malloc serves well
  if (!HasUnlimitedAddresses()) return false;
  void* const region = mmap(nullptr, kRegionSize + kExtentSize, PROT_NONE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (region == MAP_FAILED) return false;
  const auto address = reinterpret_cast<std::uintptr_t>(region);
  gRegion.store((address + kExtentSize - 1) & ~(kExtentSize - 1), std::memory_order_relaxed);
  return true;
}

}  // namespace KAPHost
