// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <mutex>

#include "base/IntrusiveList.h"
#include "base/RefCount.h"
#include "kap/KAPTypes.h"

// An identity. The cache's lock guards its item.
struct KAPCacheID {
  KAPHost::RefCount fCount = {};
  void* fItem = nullptr;  // null: none
  std::size_t fCost = 0;
  KAPDeleteProc fPurge = nullptr;
  unsigned long fMarks = 0;                    // the item is purged only when it has none
  unsigned long fTime = 0;                     // of the last use
  KAPHost::ListLinks<KAPCacheID> fLinks = {};  // of the items that may be purged
};

namespace KAPHost {

// All items of the process, at most one for each identity. An item without marks may be purged;
// such items are in a list, the least recently used one first. Marks are counted. An item is used
// when it is added and when its last mark is removed.
//
// Thread-safe. An item's purge procedure runs without the lock, after the item has left the cache:
// it may call the cache.
class Cache {
 public:
  constexpr Cache() = default;

  // False when the identity already has an item or is being destroyed.
  bool Add(KAPCacheID& id, void* item, std::size_t cost, KAPDeleteProc purgeItem) noexcept;
  // The item, with one more mark; null when there is none.
  void* Attach(KAPCacheID& id) noexcept;

  // These do nothing and return false or 0 unless `item` is the identity's item.
  bool Mark(KAPCacheID& id, const void* item) noexcept;
  void Unmark(KAPCacheID& id, const void* item) noexcept;
  void SetCost(KAPCacheID& id, const void* item, std::size_t cost) noexcept;
  std::size_t GetCost(KAPCacheID& id, const void* item) noexcept;

  // The number of uses so far: a clock by which items age.
  unsigned long Time() noexcept;
  // The cost of all items.
  std::size_t Size() noexcept;

  // Purges the least recently used item. False when there is none, or it was used after `time`.
  bool PurgeOldest(unsigned long time) noexcept;
  // Purges the item, if any, marked or not.
  void Purge(KAPCacheID& id) noexcept;

 private:
  struct Item {
    void* fItem;
    KAPDeleteProc fPurge;
  };

  void Use(KAPCacheID& id) noexcept;
  void Protect(KAPCacheID& id) noexcept;
  Item Remove(KAPCacheID& id) noexcept;

  std::mutex fMutex;
  IntrusiveList<KAPCacheID> fPurgeable;
  unsigned long fTime = 0;
  std::size_t fSize = 0;
};

extern constinit Cache gCache;

}  // namespace KAPHost
