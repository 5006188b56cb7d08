// SPDX-License-Identifier: MIT
#include "caches/CacheSet.h"

#include <utility>

#include "accounting/Accounting.h"
#include "caches/Cache.h"

namespace KAPHost {

bool ReleaseCacheID(KAPCacheID& id) noexcept {
  const RefCount::Release found = id.fCount.Drop();
  if (found == RefCount::Release::kLast) {
    gCache.Purge(id);
    Count(KAPResource::kCacheID, -1, 0);
    delete &id;
  }
  return found == RefCount::Release::kReleased || found == RefCount::Release::kLast;
}

}  // namespace KAPHost

bool KAPCacheSet::FindOrAdd(KAPCacheID& id) {
  const std::lock_guard lock(fMutex);
  if (fIDs.contains(&id)) return true;
  if (fCount.IsAlive() && id.fCount.IsAlive()) {
    fIDs.insert(&id);
    id.fCount.Add();  // the caller's reference keeps it from failing
  }
  return false;
}

void KAPCacheSet::Remove(KAPCacheID& id) noexcept {
  {
    const std::lock_guard lock(fMutex);
    if (fIDs.erase(&id) == 0) return;
  }
  KAPHost::ReleaseCacheID(id);
}

void KAPCacheSet::RemoveAll() noexcept {
  std::unordered_set<KAPCacheID*> ids;
  {
    const std::lock_guard lock(fMutex);
    ids.swap(fIDs);
  }
  for (KAPCacheID* id : ids) KAPHost::ReleaseCacheID(*id);
}
