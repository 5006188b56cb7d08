#include "kap/KAPCache.h"

#include "kap/KAPError.h"

namespace KAP_T_MT {

using KAPCacheClient = TKAPInterfaceClient<KAPCacheInterface>;

CKAPCacheID::CKAPCacheID() : TKAPReference(CKAPCache::NewCacheID(), KAPAdopt()) {}

CKAPCacheLock::CKAPCacheLock(CKAPCacheID id, void* item) : fID(std::move(id)) {
  if (item && KAPCacheClient::Call<"MarkNoPurge">(fID.Handle(), item)) fItem = item;
}

CKAPCacheLock::~CKAPCacheLock() {
  if (fItem) KAPCacheClient::CallReleasing<"MarkPurge">(fID.Handle(), fItem);
}

void CKAPCacheLock::UpdateCost(std::size_t cost) {
  if (fItem) KAPCacheClient::Call<"UpdateCost">(fID.Handle(), fItem, cost);
}

std::size_t CKAPCacheLock::ReturnCost() const {
  return fItem ? KAPCacheClient::Call<"ReturnCost">(fID.Handle(), fItem) : 0;
}

KAPCacheID* CKAPCache::NewCacheID() {
  KAPCacheID* id = KAPCacheClient::Call<"NewCacheID">();
  if (!id) CKAPError::ThrowError("couldn't create cacheID", "", 0);
  return id;
}

bool CKAPCache::Add(const CKAPCacheID& id, void* item, std::size_t cost, KAPDeleteProc purgeItem) {
  return KAPCacheClient::Call<"Add">(id.Handle(), item, cost, purgeItem);
}

CKAPCacheLock CKAPCache::Attach(const CKAPCacheID& id) {
  CKAPCacheID held(id);  // before the mark, which would stay if adding the reference threw
  void* item = KAPCacheClient::Call<"Attach">(held.Handle());
  return CKAPCacheLock(std::move(held), item, KAPAlreadyMarked());
}

std::size_t CKAPCache::CurrentCacheSize() { return KAPCacheClient::Call<"CurrentCacheSize">(); }

void CKAPCache::PurgeAll() { KAPCacheClient::Call<"PurgeAll">(); }

}  // namespace KAP_T_MT
