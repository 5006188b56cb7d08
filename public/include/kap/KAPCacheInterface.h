#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Empties a component's static caches.
using KAPClientPurgeProc = void (*)();

// Items that the host may purge when memory is short: untyped pointers, each filed under an
// identity with its cost in bytes. An item that is marked is not purged. See KAPHostInterfaces.h
// for the conventions.
//
//   id = NewCacheID();
//   Add(id, item, cost, &PurgeItem);     // the cache owns the item
//   if (void* item = Attach(id)) {       // null: purged meanwhile; make it again
//     ...                                // it stays while it is marked
//     MarkPurge(id, item);
//   }
//   Release(id);                         // the last reference purges the item
struct KAPCacheInterface
    : TKAPInterface<
          "KAPCacheInterface",
          // A new identity: one reference. Null: out of memory. [any thread]
          TKAPMethod<"NewCacheID", "KAPCacheNewCacheIDProc", KAPCacheID*(),
                     KAPMakes(KAPResource::kCacheID, KAPFault::kCache)>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRef", "KAPCacheAddRefProc", void(KAPCacheID* id)>,
          // Releases one reference; null is ignored. The last one purges the item. [any thread]
          TKAPMethod<"Release", "KAPCacheReleaseProc", void(KAPCacheID* id), kKAPReleases>,
          // The item, borrowed and marked: it is not purged until MarkPurge. Null when it was
          // purged. [any thread]
          TKAPMethod<"Attach", "KAPCacheAttachProcV2", void*(KAPCacheID* id)>,
          // Files an item, not marked; `purgeItem` gets it when it is purged. False: the identity
          // has an item or the host refuses, and the item stays the caller's. [any thread]
          TKAPMethod<"Add", "KAPCacheAddProc",
                     bool(KAPCacheID* id, void* item, std::size_t cost, KAPDeleteProc purgeItem),
                     KAPMakes(KAPResource::kCacheItem, KAPFault::kCache)>,
          // Sets the cost, in bytes; an item that is not there is ignored. [any thread]
          TKAPMethod<"UpdateCost", "KAPCacheUpdateCostProc",
                     void(KAPCacheID* id, void* item, std::size_t cost)>,
          // The cost in bytes; 0 for an item that is not there. [any thread]
          TKAPMethod<"ReturnCost", "KAPCacheReturnCostProc",
                     std::size_t(KAPCacheID* id, void* item)>,
          // Adds a mark; the item is not purged while it has any. False: it was purged.
          // [any thread]
          TKAPMethod<"MarkNoPurge", "KAPCacheMarkNoPurgeProcV2", bool(KAPCacheID* id, void* item)>,
          // Removes one mark. [any thread]
          TKAPMethod<"MarkPurge", "KAPCacheMarkPurgeProc", void(KAPCacheID* id, void* item),
                     kKAPReleases>,
          // A time that grows with every use of the cache. [any thread]
          TKAPMethod<"GetCacheTime", "KAPCacheGetCacheTimeProc", unsigned long()>,
          // The cost of all items, in bytes. [any thread]
          TKAPMethod<"CurrentCacheSize", "KAPCurrentCacheSizeProc", std::size_t()>,
          // Begins a purge; DeleteCachePurge ends it. Null: out of memory. [any thread]
          TKAPMethod<"NewCachePurge", "KAPCacheNewCachePurgeProc", KAPCachePurge*(),
                     KAPMakes(KAPResource::kCachePurge, KAPFault::kCache)>,
          // Purges the item used longest ago. False: nothing is left to purge. [exclusive]
          TKAPMethod<"PurgeNextBlock", "KAPCachePurgeNextBlockProc", bool(KAPCachePurge* purge)>,
          // Ends a purge; null is ignored. [exclusive]
          TKAPMethod<"DeleteCachePurge", "KAPCacheDeleteCachePurgeProc", void(KAPCachePurge* purge),
                     kKAPReleases>,
          // Purges every item that is not marked. [any thread]
          TKAPMethod<"PurgeAll", "KAPCachePurgeAllProc", void()>,
          // Has every component empty its static caches: calls what AddClientPurge was given.
          // [binding thread]
          TKAPMethod<"PurgeAllStaticCaches", "KAPCachePurgeAllStaticCachesProc", void()>,
          // Tells the host of a component's static caches. The number is not used. One procedure
          // name serves this method and the next, deliberately: the method tells them apart.
          // [binding thread]
          TKAPMethod<"AddClientPurge", "KAPCacheAddRemoveClientPurgeProcV2",
                     void(KAPClientPurgeProc clearAll, int)>,
          // Takes that back. [binding thread]
          TKAPMethod<"RemoveClientPurge", "KAPCacheAddRemoveClientPurgeProcV2",
                     void(KAPClientPurgeProc clearAll, int)>,
          // A new, empty set of identities: one reference. Null: out of memory. [any thread]
          TKAPMethod<"NewCacheSet", "KAPCacheNewCacheSetProc", KAPCacheSet*(),
                     KAPMakes(KAPResource::kCacheSet, KAPFault::kCache)>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRefCacheSet", "KAPCacheAddRefCacheSetProc", void(KAPCacheSet* set)>,
          // Releases one reference; null is ignored. [any thread]
          TKAPMethod<"DeleteCacheSet", "KAPCacheDeleteCacheSetProc", void(KAPCacheSet* set),
                     kKAPReleases>,
          // Whether the set has the identity. Afterwards it does: there is no other way in.
          // [any thread]
          TKAPMethod<"SearchForID", "KAPCacheSearchForIDProc",
                     bool(KAPCacheSet* set, KAPCacheID* id)>,
          // Removes the identity if it is there. [any thread]
          TKAPMethod<"RemoveID", "KAPCacheRemoveIDProc", void(KAPCacheSet* set, KAPCacheID* id)>,
          // Removes all of them. [any thread]
          TKAPMethod<"RemoveIDs", "KAPCacheRemoveIDsProc", void(KAPCacheSet* set)>> {};

}  // namespace KAP_T_MT
