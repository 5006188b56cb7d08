// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Clears the static caches of a component.
using KAPClientPurgeProc = void (*)();

// Items that the host may purge when memory is short: untyped pointers, each filed under an
// identity with its cost in bytes. A marked item is not purged. See KAPHostInterfaces.h for the
// conventions and KAPCache.h for the classes.
//
//   id = NewCacheID();
//   Add(id, item, cost, &PurgeItem);     // the cache owns the item
//   if (void* item = Attach(id)) {       // null: purged; make it again
//     ...                                // not purged while it is marked
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
          // Releases one reference; null is ignored. The last release purges the item. [any thread]
          TKAPMethod<"Release", "KAPCacheReleaseProc", void(KAPCacheID* id), kKAPReleases>,
          // The item, borrowed and marked: it is not purged before MarkPurge. Null when it was
          // purged. [any thread]
          TKAPMethod<"Attach", "KAPCacheAttachProcV2", void*(KAPCacheID* id)>,
          // Files an unmarked item; a purge passes it to `purgeItem`. False: the identity has an
          // item or the host fails, and the item stays the caller's. [any thread]
          TKAPMethod<"Add", "KAPCacheAddProc",
                     bool(KAPCacheID* id, void* item, std::size_t cost, KAPDeleteProc purgeItem),
                     KAPMakes(KAPResource::kCacheItem, KAPFault::kCache)>,
          // Sets the cost in bytes; an item that was purged is ignored. [any thread]
          TKAPMethod<"UpdateCost", "KAPCacheUpdateCostProc",
                     void(KAPCacheID* id, void* item, std::size_t cost)>,
          // The cost in bytes; 0 for an item that was purged. [any thread]
          TKAPMethod<"ReturnCost", "KAPCacheReturnCostProc",
                     std::size_t(KAPCacheID* id, void* item)>,
          // Adds a mark; an item with marks is not purged. False: the item was purged.
          // [any thread]
          TKAPMethod<"MarkNoPurge", "KAPCacheMarkNoPurgeProcV2", bool(KAPCacheID* id, void* item)>,
          // Removes one mark. [any thread]
          TKAPMethod<"MarkPurge", "KAPCacheMarkPurgeProc", void(KAPCacheID* id, void* item),
                     kKAPReleases>,
          // A counter that grows with every use of the cache. [any thread]
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
          // Calls every procedure registered with AddClientPurge, so that all components clear
          // their static caches. [binding thread]
          TKAPMethod<"PurgeAllStaticCaches", "KAPCachePurgeAllStaticCachesProc", void()>,
          // Registers the procedure that clears a component's static caches. The number is unused;
          // callers pass 1. Deliberate: this method and the next share one procedure name, and the
          // binder distinguishes them by the method name. A host without memory for it reports that
          // and does not know the component. [binding thread]
          TKAPMethod<"AddClientPurge", "KAPCacheAddRemoveClientPurgeProcV2",
                     void(KAPClientPurgeProc clearAll, int)>,
          // Removes a procedure registered with AddClientPurge; ignores any other. [binding thread]
          TKAPMethod<"RemoveClientPurge", "KAPCacheAddRemoveClientPurgeProcV2",
                     void(KAPClientPurgeProc clearAll, int), kKAPReleases>,
          // A new, empty set of identities: one reference. Null: out of memory. [any thread]
          TKAPMethod<"NewCacheSet", "KAPCacheNewCacheSetProc", KAPCacheSet*(),
                     KAPMakes(KAPResource::kCacheSet, KAPFault::kCache)>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRefCacheSet", "KAPCacheAddRefCacheSetProc", void(KAPCacheSet* set)>,
          // Releases one reference; null is ignored. [any thread]
          TKAPMethod<"DeleteCacheSet", "KAPCacheDeleteCacheSetProc", void(KAPCacheSet* set),
                     kKAPReleases>,
          // Whether the set contains the identity. Deliberate: adds the identity if not, which is
          // the only way to add one. A host without memory for it reports that, returns false and
          // adds nothing. [any thread]
          TKAPMethod<"SearchForID", "KAPCacheSearchForIDProc",
                     bool(KAPCacheSet* set, KAPCacheID* id), KAPFails(KAPFault::kCache)>,
          // Removes the identity; one that is not in the set is ignored. [any thread]
          TKAPMethod<"RemoveID", "KAPCacheRemoveIDProc", void(KAPCacheSet* set, KAPCacheID* id)>,
          // Removes all identities. [any thread]
          TKAPMethod<"RemoveIDs", "KAPCacheRemoveIDsProc", void(KAPCacheSet* set)>> {};

}  // namespace KAP_T_MT
