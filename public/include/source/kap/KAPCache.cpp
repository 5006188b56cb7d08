// SPDX-License-Identifier: MIT
#include "kap/KAPCache.h"

#include "kap/KAPError.h"
#include "kap/KAPMemory.h"

namespace KAP_T_MT {

using KAPCacheClient = TKAPInterfaceClient<KAPCacheInterface>;

namespace {

template <TKAPName Method>
auto* New() {
  auto* made = KAPCacheClient::Call<Method>();
  if (!made) CKAPMemory::ThrowMemError();
  return made;
}

}  // namespace

CKAPCacheID::CKAPCacheID() : TKAPReference(CKAPCache::NewCacheID()) {}

CKAPCacheID CKAPCacheID::New() { return CKAPCacheID(CKAPCache::NewCacheID()); }

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

CKAPCachePurge CKAPCachePurge::New() {
  CKAPCachePurge purge;
  purge.fPurge = KAP_T_MT::New<"NewCachePurge">();
  return purge;
}

CKAPCachePurge::~CKAPCachePurge() {
  if (fPurge) KAPCacheClient::CallReleasing<"DeleteCachePurge">(fPurge);
}

bool CKAPCachePurge::PurgeNextBlock() {
  return fPurge && KAPCacheClient::Call<"PurgeNextBlock">(fPurge);
}

CKAPCacheSet CKAPCacheSet::New() {
  return CKAPCacheSet(KAP_T_MT::New<"NewCacheSet">(), KAPAdopt());
}

bool CKAPCacheSet::SearchForID(const CKAPCacheID& id) {
  return !IsNull() && KAPCacheClient::Call<"SearchForID">(Handle(), id.Handle());
}

void CKAPCacheSet::RemoveID(const CKAPCacheID& id) {
  if (!IsNull()) KAPCacheClient::Call<"RemoveID">(Handle(), id.Handle());
}

void CKAPCacheSet::RemoveIDs() {
  if (!IsNull()) KAPCacheClient::Call<"RemoveIDs">(Handle());
}

TKAPNewHandle<KAPCacheID> CKAPCache::NewCacheID() {
  KAPCacheID* id = KAPCacheClient::Call<"NewCacheID">();
  if (!id) CKAPError::ThrowError("couldn't create cacheID", "", 0);
  return TKAPNewHandle(id);
}

bool CKAPCache::Add(const CKAPCacheID& id, void* item, std::size_t cost, KAPDeleteProc purgeItem) {
  return KAPCacheClient::Call<"Add">(id.Handle(), item, cost, purgeItem);
}

CKAPCacheLock CKAPCache::Attach(const CKAPCacheID& id) {
  CKAPCacheID held(id);  // before the mark, which would stay if adding the reference threw
  void* item = KAPCacheClient::Call<"Attach">(held.Handle());
  return CKAPCacheLock(std::move(held), item, KAPAlreadyMarked());
}

unsigned long CKAPCache::GetCacheTime() { return KAPCacheClient::Call<"GetCacheTime">(); }

std::size_t CKAPCache::CurrentCacheSize() { return KAPCacheClient::Call<"CurrentCacheSize">(); }

void CKAPCache::PurgeAll() { KAPCacheClient::Call<"PurgeAll">(); }

void CKAPCache::PurgeAllStaticCaches() { KAPCacheClient::Call<"PurgeAllStaticCaches">(); }

}  // namespace KAP_T_MT
