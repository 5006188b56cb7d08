#include <new>

#include "Cache.h"
#include "CacheSet.h"
#include "Counting.h"
#include "Errors.h"
#include "Gate.h"
#include "HostState.h"
#include "Services.h"
#include "Tally.h"

// The procedures of KAPCacheInterface. Nothing is purged unless somebody asks for it: the host has
// no limit of its own.

// A purge in progress. Items used after it began are left alone, so that it comes to an end even
// when items are filed again as they are purged.
struct KAPCachePurge {
  unsigned long fBegun;
};

namespace KAPHost {

namespace {

using KAP_T_MT::KAPClientPurgeProc;

KAPCacheID* NewCacheID() noexcept {
  if (Fails(KAPFault::kCache)) return nullptr;
  auto* const id = new (std::nothrow) KAPCacheID;
  if (id != nullptr) Count(kCacheIDSlot, 1, 1);
  return id;
}

void AddRef(KAPCacheID* id) noexcept {
  if (id == nullptr) return;
  AddCacheIDRef(*id);
  Count(kCacheIDSlot, 0, 1);
}

// Without a host the components whose procedures would purge items may be gone as well; hence
// nothing is purged then, here and below.
void Release(KAPCacheID* id) noexcept {
  if (id == nullptr || IsClosed()) return;
  Count(kCacheIDSlot, 0, -1);
  ReleaseCacheID(*id);
}

void* Attach(KAPCacheID* id) noexcept {
  return id != nullptr && !IsClosed() ? gCache.Attach(*id) : nullptr;
}

bool Add(KAPCacheID* id, void* item, std::size_t cost, KAPDeleteProc purgeItem) noexcept {
  return !Fails(KAPFault::kCache) && id != nullptr && item != nullptr &&
         gCache.Add(*id, item, cost, purgeItem);
}

void UpdateCost(KAPCacheID* id, void* item, std::size_t cost) noexcept {
  if (id != nullptr && item != nullptr) gCache.SetCost(*id, item, cost);
}

std::size_t ReturnCost(KAPCacheID* id, void* item) noexcept {
  return id != nullptr && item != nullptr ? gCache.GetCost(*id, item) : 0;
}

bool MarkNoPurge(KAPCacheID* id, void* item) noexcept {
  return id != nullptr && item != nullptr && gCache.Mark(*id, item);
}

void MarkPurge(KAPCacheID* id, void* item) noexcept {
  if (id != nullptr && item != nullptr) gCache.Unmark(*id, item);
}

unsigned long GetCacheTime() noexcept { return gCache.Time(); }

std::size_t CurrentCacheSize() noexcept { return gCache.Size(); }

KAPCachePurge* NewCachePurge() noexcept {
  if (Fails(KAPFault::kCache)) return nullptr;
  auto* const purge = new (std::nothrow) KAPCachePurge{gCache.Time()};
  if (purge != nullptr) Count(kCachePurgeSlot, 1, 0);
  return purge;
}

bool PurgeNextBlock(KAPCachePurge* purge) noexcept {
  return purge != nullptr && !IsClosed() && gCache.PurgeOldest(purge->fBegun);
}

void DeleteCachePurge(KAPCachePurge* purge) noexcept {
  if (purge == nullptr) return;
  Count(kCachePurgeSlot, -1, 0);
  delete purge;
}

void PurgeAll() noexcept {
  KAPCachePurge purge = {gCache.Time()};
  while (PurgeNextBlock(&purge)) {
  }
}

// Runs body(the client purges of the live host), which may throw std::bad_alloc.
template <class Body>
void WithClientPurges(Body body) noexcept {
  HostState* const state = HostState::Current();
  if (state == nullptr) return;
  ReportError(ReturnError([&]() -> KAPError* {
    body(state->fClientPurges);
    return nullptr;
  }));
}

void PurgeAllStaticCaches() noexcept {
  WithClientPurges([](ClientPurges& purges) { purges.CallAll(); });
}

// The number that components hand over makes no difference.
void AddClientPurge(KAPClientPurgeProc clearAll, int) noexcept {
  if (clearAll != nullptr) WithClientPurges([&](ClientPurges& purges) { purges.Add(clearAll); });
}

void RemoveClientPurge(KAPClientPurgeProc clearAll, int) noexcept {
  WithClientPurges([&](ClientPurges& purges) { purges.Remove(clearAll); });
}

KAPCacheSet* NewCacheSet() noexcept {
  if (Fails(KAPFault::kCache)) return nullptr;
  auto* const set = new (std::nothrow) KAPCacheSet;
  if (set != nullptr) Count(kCacheSetSlot, 1, 1);
  return set;
}

void AddRefCacheSet(KAPCacheSet* set) noexcept {
  if (set == nullptr) return;
  Increment(set->fCount);
  Count(kCacheSetSlot, 0, 1);
}

// Gives up one reference.
void DeleteCacheSet(KAPCacheSet* set) noexcept {
  if (set == nullptr || IsClosed()) return;
  Count(kCacheSetSlot, 0, -1);
  if (Decrement(set->fCount) != 0) return;
  Count(kCacheSetSlot, -1, 0);
  delete set;
}

// Files the identity when it is not there yet: there is no other way in. Deliberate, so that who
// walks through items may ask whether it has seen one before.
bool SearchForID(KAPCacheSet* set, KAPCacheID* id) noexcept {
  bool found = false;
  if (set == nullptr || id == nullptr) return found;
  ReportError(ReturnError([&]() -> KAPError* {
    found = set->FindOrAdd(*id);
    return nullptr;
  }));
  return found;
}

void RemoveID(KAPCacheSet* set, KAPCacheID* id) noexcept {
  if (set != nullptr && id != nullptr && !IsClosed()) set->Remove(*id);
}

void RemoveIDs(KAPCacheSet* set) noexcept {
  if (set != nullptr && !IsClosed()) set->RemoveAll();
}

void RegisterCaches(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPCacheInterface>(
      binder, &NewCacheID, &AddRef, &Release, &Attach, &Add, &UpdateCost, &ReturnCost, &MarkNoPurge,
      &MarkPurge, &GetCacheTime, &CurrentCacheSize, &NewCachePurge, &PurgeNextBlock,
      &DeleteCachePurge, &PurgeAll, &PurgeAllStaticCaches, &AddClientPurge, &RemoveClientPurge,
      &NewCacheSet, &AddRefCacheSet, &DeleteCacheSet, &SearchForID, &RemoveID, &RemoveIDs);
}

void CountCaches(Snapshot& books) {
  books.Add(KAPResource::kCacheID, "", TallyTotal(kCacheIDSlot));
  books.Add(KAPResource::kCacheItem, "", TallyTotal(kCacheItemSlot));
  books.Add(KAPResource::kCacheSet, "", TallyTotal(kCacheSetSlot));
  books.Add(KAPResource::kCachePurge, "", TallyTotal(kCachePurgeSlot));
}

}  // namespace

const Service kCacheService = {&RegisterCaches, &CountCaches};

}  // namespace KAPHost
