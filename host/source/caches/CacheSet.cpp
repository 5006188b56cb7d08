#include "caches/CacheSet.h"

#include <utility>

#include "accounting/Accounting.h"
#include "base/Counting.h"
#include "caches/Cache.h"

namespace KAPHost {

void AddCacheIDRef(KAPCacheID& id) noexcept { Increment(id.fCount); }

void ReleaseCacheID(KAPCacheID& id) noexcept {
  if (Decrement(id.fCount) != 0) return;
  gCache.Purge(id);
  Count(KAPResource::kCacheID, -1, 0);
  delete &id;
}

}  // namespace KAPHost

bool KAPCacheSet::FindOrAdd(KAPCacheID& id) {
  const std::lock_guard lock(fMutex);
  const bool added = fIDs.insert(&id).second;
  if (added) KAPHost::AddCacheIDRef(id);
  return !added;
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
