#pragma once

#include <atomic>
#include <mutex>
#include <unordered_set>

#include "kap/KAPTypes.h"

namespace KAPHost {

// An identity's references; the last one purges its item.
void AddCacheIDRef(KAPCacheID& id) noexcept;
void ReleaseCacheID(KAPCacheID& id) noexcept;

}  // namespace KAPHost

// A group of identities, each held by a reference. Thread-safe. References are given up without the
// lock, since an item may be purged then.
struct KAPCacheSet {
 public:
  KAPCacheSet() = default;
  KAPCacheSet(const KAPCacheSet&) = delete;
  KAPCacheSet& operator=(const KAPCacheSet&) = delete;
  ~KAPCacheSet() { RemoveAll(); }

  // Whether the identity was here before; it is now. Throws std::bad_alloc.
  bool FindOrAdd(KAPCacheID& id);
  void Remove(KAPCacheID& id) noexcept;
  void RemoveAll() noexcept;

  std::atomic<long> fCount{1};

 private:
  std::mutex fMutex;
  std::unordered_set<KAPCacheID*> fIDs;
};
