// SPDX-License-Identifier: MIT
#include "kap/KAPStaticCache.h"

#include "kap/KAPBoundary.h"
#include "kap/KAPCacheInterface.h"
#include "kap/KAPInterfaceClient.h"

namespace KAP_T_MT {

using KAPCacheClient = TKAPInterfaceClient<KAPCacheInterface>;

// Initialised at compile time: caches are static objects of other files and may be constructed
// before the static objects of this one.
constinit CKAPStaticCacheBase* CKAPStaticCacheBase::fList = nullptr;
constinit bool CKAPStaticCacheBase::fAcceptingCaches = false;

CKAPStaticCacheBase::CKAPStaticCacheBase() {
  if (fAcceptingCaches && !fList) AddClientPurge();
  fNext = fList;
  if (fNext) fNext->fPrevious = this;
  fList = this;
}

CKAPStaticCacheBase::~CKAPStaticCacheBase() {
  (fPrevious ? fPrevious->fNext : fList) = fNext;
  if (fNext) fNext->fPrevious = fPrevious;
  if (fAcceptingCaches && !fList) RemoveClientPurge();
}

void CKAPStaticCacheBase::LinkToKAP() {
  if (fList) AddClientPurge();
  fAcceptingCaches = true;
}

void CKAPStaticCacheBase::UnlinkFromKAP() noexcept {
  // Also after a failed binding, when the host may not know the procedure: it ignores that.
  fAcceptingCaches = false;
  if (fList) RemoveClientPurge();
  ClearAll();
}

void CKAPStaticCacheBase::KillAll() noexcept {
  fAcceptingCaches = false;
  for (CKAPStaticCacheBase* cache = fList; cache; cache = cache->fNext) cache->Kill();
}

void CKAPStaticCacheBase::AddClientPurge() { KAPCacheClient::Call<"AddClientPurge">(&ClearAll, 1); }

void CKAPStaticCacheBase::RemoveClientPurge() noexcept {
  KAPCacheClient::CallReleasing<"RemoveClientPurge">(&ClearAll, 1);
}

// The host calls it too, so it must not throw; a cache that fails must not keep the others from
// being cleared.
void CKAPStaticCacheBase::ClearAll() noexcept {
  for (CKAPStaticCacheBase *cache = fList, *next; cache; cache = next) {
    next = cache->fNext;  // an item that is cleared may own its cache
    KAPReportingError([cache] { cache->Clear(); });
  }
}

}  // namespace KAP_T_MT
