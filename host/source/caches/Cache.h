#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>

#include "kap/KAPTypes.h"

// An identity. What is filed under it is guarded by the cache's lock.
struct KAPCacheID {
  std::atomic<long> fCount{1};
  void* fItem = nullptr;  // null: none
  std::size_t fCost = 0;
  KAPDeleteProc fPurge = nullptr;
  unsigned long fMarks = 0;  // those who do not want the item purged
  unsigned long fTime = 0;   // of the last use
  // Of the items that may be purged.
  KAPCacheID* fPrevious = nullptr;
  KAPCacheID* fNext = nullptr;
};

namespace KAPHost {

// All items of the process, one for each identity at most. An item may be purged while nobody has
// marked it; those that may are in a list, the least recently used one first. Marks are counted: an
// item is used when it is filed and when its last mark goes.
//
// Thread-safe. Items are purged without the lock, when nobody can find them any more: their
// procedures may call the cache.
class Cache {
 public:
  constexpr Cache() = default;

  // False when the identity has an item already, or is being given up.
  bool Add(KAPCacheID& id, void* item, std::size_t cost, KAPDeleteProc purgeItem) noexcept;
  // The item, with one mark more; null when there is none.
  void* Attach(KAPCacheID& id) noexcept;

  // These do nothing, and give false or 0, unless this is the identity's item.
  bool Mark(KAPCacheID& id, const void* item) noexcept;
  void Unmark(KAPCacheID& id, const void* item) noexcept;
  void SetCost(KAPCacheID& id, const void* item, std::size_t cost) noexcept;
  std::size_t GetCost(KAPCacheID& id, const void* item) noexcept;

  // The number of uses so far: a clock by which items age.
  unsigned long Time() noexcept;
  // What all items cost.
  std::size_t Size() noexcept;

  // Purges the least recently used item, unless it was used later than at `time`. False when there
  // is no such item that may be purged.
  bool PurgeOldest(unsigned long time) noexcept;
  // Purges the item, if there is one, marked or not.
  void Purge(KAPCacheID& id) noexcept;

 private:
  struct Item {
    void* fItem;
    KAPDeleteProc fPurge;
  };

  void Use(KAPCacheID& id) noexcept;
  void Protect(KAPCacheID& id) noexcept;
  void Unlink(const KAPCacheID& id) noexcept;
  Item Remove(KAPCacheID& id) noexcept;

  std::mutex fMutex;
  KAPCacheID* fOldest = nullptr;
  KAPCacheID* fNewest = nullptr;
  unsigned long fTime = 0;
  std::size_t fSize = 0;
};

extern constinit Cache gCache;

}  // namespace KAPHost
