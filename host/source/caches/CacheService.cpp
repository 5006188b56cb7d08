// SPDX-License-Identifier: MIT
#include <new>

#include "accounting/Accounting.h"
#include "base/Current.h"
#include "binder/Registration.h"
#include "caches/Cache.h"
#include "caches/CacheSet.h"
#include "caches/ClientPurges.h"
#include "errors/Errors.h"
#include "faults/Gate.h"

// The procedures of KAPCacheInterface. The host purges only on request: it has no limit of its own.

// A purge in progress. It leaves items alone that were used after it began, so it ends even when
// purge procedures add items again.
struct KAPCachePurge {
  unsigned long fBegun;
};

namespace KAPHost {

namespace {

using KAP_T_MT::KAPClientPurgeProc;

KAPCacheID* NewCacheID() noexcept {
  auto* const id = new (std::nothrow) KAPCacheID;
  if (id) Count(KAPResource::kCacheID, 1, 1);
  return id;
}

void AddRef(KAPCacheID* id) noexcept {
  if (id && id->fCount.Add()) Count(KAPResource::kCacheID, 0, 1);
}

// Without a host, the components whose procedures purge items may be unloaded as well; hence
// nothing is purged then, here and below.
void Release(KAPCacheID* id) noexcept {
  if (id && !IsClosed() && ReleaseCacheID(*id)) Count(KAPResource::kCacheID, 0, -1);
}

void* Attach(KAPCacheID* id) noexcept { return id && !IsClosed() ? gCache.Attach(*id) : nullptr; }

bool Add(KAPCacheID* id, void* item, std::size_t cost, KAPDeleteProc purgeItem) noexcept {
  return id && item && gCache.Add(*id, item, cost, purgeItem);
}

void UpdateCost(KAPCacheID* id, void* item, std::size_t cost) noexcept {
  if (id && item) gCache.SetCost(*id, item, cost);
}

std::size_t ReturnCost(KAPCacheID* id, void* item) noexcept {
  return id && item ? gCache.GetCost(*id, item) : 0;
}

bool MarkNoPurge(KAPCacheID* id, void* item) noexcept {
  return id && item && gCache.Mark(*id, item);
}

void MarkPurge(KAPCacheID* id, void* item) noexcept {
  if (id && item) gCache.Unmark(*id, item);
}

unsigned long GetCacheTime() noexcept { return gCache.Time(); }

std::size_t CurrentCacheSize() noexcept { return gCache.Size(); }

KAPCachePurge* NewCachePurge() noexcept {
  auto* const purge = new (std::nothrow) KAPCachePurge{gCache.Time()};
  if (purge) Count(KAPResource::kCachePurge, 1, 0);
  return purge;
}

bool PurgeNextBlock(KAPCachePurge* purge) noexcept {
  return purge && !IsClosed() && gCache.PurgeOldest(purge->fBegun);
}

void DeleteCachePurge(KAPCachePurge* purge) noexcept {
  if (!purge) return;
  Count(KAPResource::kCachePurge, -1, 0);
  delete purge;
}

void PurgeAll() noexcept {
  KAPCachePurge purge = {gCache.Time()};
  while (PurgeNextBlock(&purge)) {
  }
}

// Runs body(client purges) when there is a host; reports when it throws std::bad_alloc.
template <class Body>
void WithClientPurges(Body body) noexcept {
  ClientPurges* const purges = Current<ClientPurges>();
  if (!purges) return;
  ReportError(ReturnError([&]() -> KAPError* {
    body(*purges);
    return nullptr;
  }));
}

void PurgeAllStaticCaches() noexcept {
  WithClientPurges([](ClientPurges& purges) { purges.CallAll(); });
}

// The number makes no difference.
void AddClientPurge(KAPClientPurgeProc clearAll, int) noexcept {
  if (clearAll) WithClientPurges([&](ClientPurges& purges) { purges.Add(clearAll); });
}

void RemoveClientPurge(KAPClientPurgeProc clearAll, int) noexcept {
  WithClientPurges([&](ClientPurges& purges) { purges.Remove(clearAll); });
}

KAPCacheSet* NewCacheSet() noexcept {
  auto* const set = new (std::nothrow) KAPCacheSet;
  if (set) Count(KAPResource::kCacheSet, 1, 1);
  return set;
}

void AddRefCacheSet(KAPCacheSet* set) noexcept {
  if (set && set->fCount.Add()) Count(KAPResource::kCacheSet, 0, 1);
}

void DeleteCacheSet(KAPCacheSet* set) noexcept {
  if (!set || IsClosed()) return;
  const RefCount::Release found = set->fCount.Drop();
  if (found == RefCount::Release::kReleased) Count(KAPResource::kCacheSet, 0, -1);
  if (found != RefCount::Release::kLast) return;
  Count(KAPResource::kCacheSet, -1, -1);
  set->RemoveAll();  // purges items, whose procedures may use the set
  delete set;
}

// Adds the identity when it is not there: deliberate, so that a caller that walks through items can
// ask whether it has seen one before.
bool SearchForID(KAPCacheSet* set, KAPCacheID* id) noexcept {
  bool found = false;
  if (!set || !id) return found;
  ReportError(ReturnError([&]() -> KAPError* {
    found = set->FindOrAdd(*id);
    return nullptr;
  }));
  return found;
}

void RemoveID(KAPCacheSet* set, KAPCacheID* id) noexcept {
  if (set && id && !IsClosed()) set->Remove(*id);
}

void RemoveIDs(KAPCacheSet* set) noexcept {
  if (set && !IsClosed()) set->RemoveAll();
}

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPCacheInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPCacheInterface, &NewCacheID, &AddRef, &Release, &Attach, &Add,
                &UpdateCost, &ReturnCost, &MarkNoPurge, &MarkPurge, &GetCacheTime,
                &CurrentCacheSize, &NewCachePurge, &PurgeNextBlock, &DeleteCachePurge, &PurgeAll,
                &PurgeAllStaticCaches, &AddClientPurge, &RemoveClientPurge, &NewCacheSet,
                &AddRefCacheSet, &DeleteCacheSet, &SearchForID, &RemoveID, &RemoveIDs>(binder);
}

}  // namespace KAPHost
