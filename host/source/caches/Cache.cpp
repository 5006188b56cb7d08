// SPDX-License-Identifier: MIT
#include "caches/Cache.h"

#include "accounting/Accounting.h"
#include "base/Counting.h"

namespace KAPHost {

constinit Cache gCache;

// Makes the item the newest of those that may be purged.
void Cache::Use(KAPCacheID& id) noexcept {
  id.fTime = ++fTime;
  fPurgeable.Append(id);
}

void Cache::Protect(KAPCacheID& id) noexcept {
  if (id.fMarks++ == 0) fPurgeable.Remove(id);
}

Cache::Item Cache::Remove(KAPCacheID& id) noexcept {
  if (id.fMarks == 0) fPurgeable.Remove(id);
  fSize -= id.fCost;
  Count(KAPResource::kCacheItem, -1, static_cast<long>(0 - id.fCost));
  const Item item = {id.fItem, id.fPurge};
  id.fItem = nullptr;
  id.fMarks = 0;
  return item;
}

bool Cache::Add(KAPCacheID& id, void* item, std::size_t cost, KAPDeleteProc purgeItem) noexcept {
  const ThreadLock lock(fMutex);
  if (id.fItem || !id.fCount.IsAlive()) return false;
  id.fItem = item;
  id.fCost = cost;
  id.fPurge = purgeItem;
  fSize += cost;
  Count(KAPResource::kCacheItem, 1, static_cast<long>(cost));
  Use(id);
  return true;
}

void* Cache::Attach(KAPCacheID& id) noexcept {
  const ThreadLock lock(fMutex);
  if (id.fItem) Protect(id);
  return id.fItem;
}

bool Cache::Mark(KAPCacheID& id, const void* item) noexcept {
  const ThreadLock lock(fMutex);
  if (id.fItem != item) return false;
  Protect(id);
  return true;
}

void Cache::Unmark(KAPCacheID& id, const void* item) noexcept {
  const ThreadLock lock(fMutex);
  if (id.fItem == item && id.fMarks != 0 && --id.fMarks == 0) Use(id);
}

void Cache::SetCost(KAPCacheID& id, const void* item, std::size_t cost) noexcept {
  const ThreadLock lock(fMutex);
  if (id.fItem != item) return;
  Count(KAPResource::kCacheItem, 0, static_cast<long>(cost - id.fCost));
  fSize += cost - id.fCost;
  id.fCost = cost;
}

std::size_t Cache::GetCost(KAPCacheID& id, const void* item) noexcept {
  const ThreadLock lock(fMutex);
  return id.fItem == item ? id.fCost : 0;
}

unsigned long Cache::Time() noexcept {
  const ThreadLock lock(fMutex);
  return fTime;
}

std::size_t Cache::Size() noexcept {
  const ThreadLock lock(fMutex);
  return fSize;
}

bool Cache::PurgeOldest(unsigned long time) noexcept {
  Item item = {};
  {
    const ThreadLock lock(fMutex);
    KAPCacheID* oldest = fPurgeable.First();
    if (!oldest || oldest->fTime > time) return false;
    item = Remove(*oldest);
  }
  if (item.fPurge) item.fPurge(item.fItem);
  return true;
}

void Cache::Purge(KAPCacheID& id) noexcept {
  Item item = {};
  {
    const ThreadLock lock(fMutex);
    if (!id.fItem) return;
    item = Remove(id);
  }
  if (item.fPurge) item.fPurge(item.fItem);
}

}  // namespace KAPHost
