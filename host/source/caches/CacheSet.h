#pragma once

#include <atomic>
#include <mutex>
#include <unordered_set>

#include "kap/KAPTypes.h"

namespace KAPHost {

// Count an identity's references. Releasing the last one purges its item.
void AddCacheIDRef(KAPCacheID& id) noexcept;
void ReleaseCacheID(KAPCacheID& id) noexcept;

}  // namespace KAPHost

// A set of identities, with a reference to each. Thread-safe. References are released without the
// lock, since that may purge an item.
struct KAPCacheSet {
 public:
  KAPCacheSet() = default;
  KAPCacheSet(const KAPCacheSet&) = delete;
  KAPCacheSet& operator=(const KAPCacheSet&) = delete;
  ~KAPCacheSet() { RemoveAll(); }

  // Adds the identity unless it is there; returns whether it was. Throws std::bad_alloc.
  bool FindOrAdd(KAPCacheID& id);
  void Remove(KAPCacheID& id) noexcept;
  void RemoveAll() noexcept;

  std::atomic<long> fCount{1};

 private:
  std::mutex fMutex;
  std::unordered_set<KAPCacheID*> fIDs;
};
