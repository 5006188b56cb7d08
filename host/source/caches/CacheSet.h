// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>
#include <unordered_set>

#include "base/RefCount.h"
#include "kap/KAPTypes.h"

namespace KAPHost {

// Releases a reference to an identity; the last one purges its item. False when there was none: the
// identity is being destroyed.
bool ReleaseCacheID(KAPCacheID& id) noexcept;

}  // namespace KAPHost

// A set of identities, with a reference to each. Thread-safe. References are released without the
// lock, since that may purge an item.
struct KAPCacheSet {
 public:
  KAPCacheSet() = default;
  KAPCacheSet(const KAPCacheSet&) = delete;
  KAPCacheSet& operator=(const KAPCacheSet&) = delete;
  ~KAPCacheSet() = default;

  // Adds the identity unless it is there; returns whether it was. Does not add one that is being
  // destroyed, nor does a set that is. Throws std::bad_alloc.
  bool FindOrAdd(KAPCacheID& id);
  void Remove(KAPCacheID& id) noexcept;
  void RemoveAll() noexcept;

  KAPHost::RefCount fCount;

 private:
  std::mutex fMutex;
  std::unordered_set<KAPCacheID*> fIDs;
};
