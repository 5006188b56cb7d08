#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Empties a component's static caches.
using KAPClientPurgeProc = void (*)();

// Items that may be purged when memory is short: untyped pointers, each filed under an identity
// with what it costs. See KAPHostInterfaces.h for the conventions.
struct KAPCacheInterface
    : TKAPInterface<
          "KAPCacheInterface",
          // Null when it cannot.
          TKAPMethod<"NewCacheID", "KAPCacheNewCacheIDProc", KAPCacheID*()>,
          TKAPMethod<"AddRef", "KAPCacheAddRefProc", void(KAPCacheID* id)>,
          TKAPMethod<"Release", "KAPCacheReleaseProc", void(KAPCacheID* id)>,
          // The item, marked not purgeable; null when it was purged.
          TKAPMethod<"Attach", "KAPCacheAttachProcV2", void*(KAPCacheID* id)>,
          TKAPMethod<"Add", "KAPCacheAddProc",
                     bool(KAPCacheID* id, void* item, std::size_t cost, KAPDeleteProc purgeItem)>,
          TKAPMethod<"UpdateCost", "KAPCacheUpdateCostProc",
                     void(KAPCacheID* id, void* item, std::size_t cost)>,
          TKAPMethod<"ReturnCost", "KAPCacheReturnCostProc",
                     std::size_t(KAPCacheID* id, void* item)>,
          TKAPMethod<"MarkNoPurge", "KAPCacheMarkNoPurgeProcV2", bool(KAPCacheID* id, void* item)>,
          TKAPMethod<"MarkPurge", "KAPCacheMarkPurgeProc", void(KAPCacheID* id, void* item)>,
          TKAPMethod<"GetCacheTime", "KAPCacheGetCacheTimeProc", unsigned long()>,
          TKAPMethod<"CurrentCacheSize", "KAPCurrentCacheSizeProc", std::size_t()>,
          TKAPMethod<"NewCachePurge", "KAPCacheNewCachePurgeProc", KAPCachePurge*()>,
          // False: nothing left to purge.
          TKAPMethod<"PurgeNextBlock", "KAPCachePurgeNextBlockProc", bool(KAPCachePurge* purge)>,
          TKAPMethod<"DeleteCachePurge", "KAPCacheDeleteCachePurgeProc",
                     void(KAPCachePurge* purge)>,
          TKAPMethod<"PurgeAll", "KAPCachePurgeAllProc", void()>,
          TKAPMethod<"PurgeAllStaticCaches", "KAPCachePurgeAllStaticCachesProc", void()>,
          // One procedure name for both, deliberately: the method tells them apart.
          TKAPMethod<"AddClientPurge", "KAPCacheAddRemoveClientPurgeProcV2",
                     void(KAPClientPurgeProc clearAll, int)>,
          TKAPMethod<"RemoveClientPurge", "KAPCacheAddRemoveClientPurgeProcV2",
                     void(KAPClientPurgeProc clearAll, int)>,
          TKAPMethod<"NewCacheSet", "KAPCacheNewCacheSetProc", KAPCacheSet*()>,
          TKAPMethod<"AddRefCacheSet", "KAPCacheAddRefCacheSetProc", void(KAPCacheSet* set)>,
          TKAPMethod<"DeleteCacheSet", "KAPCacheDeleteCacheSetProc", void(KAPCacheSet* set)>,
          TKAPMethod<"SearchForID", "KAPCacheSearchForIDProc",
                     bool(KAPCacheSet* set, KAPCacheID* id)>,
          TKAPMethod<"RemoveID", "KAPCacheRemoveIDProc", void(KAPCacheSet* set, KAPCacheID* id)>,
          TKAPMethod<"RemoveIDs", "KAPCacheRemoveIDsProc", void(KAPCacheSet* set)>> {};

}  // namespace KAP_T_MT
