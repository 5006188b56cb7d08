// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <utility>

#include "kap/KAPCacheInterface.h"
#include "kap/KAPReference.h"

// The host's cache: items that it may purge when memory is short. An item is filed under an
// identity and is not purged while a lock on it exists. The host decides what to purge first.
//
//   const CKAPCacheID id = CKAPCacheID::New();
//   if (!CKAPCache::Add(id, page, cost, &DeletePage)) DeletePage(page);
//   ...
//   if (const CKAPCacheLock lock = CKAPCache::Attach(id)) {
//     Draw(*static_cast<Page*>(lock.Item()));      // stays while `lock` lives
//   } else {
//     ...                                          // purged meanwhile: make it again
//   }
//
// Every entry of KAPCacheInterface is here: those of an item in CKAPCacheID and CKAPCacheLock,
// those of a purge in CKAPCachePurge, those of a set in CKAPCacheSet, the others in CKAPCache. Only
// the two for static caches are used by CKAPStaticCacheBase alone.
//
// Errors, besides those stated below: a table that cannot be loaded throws (KAPInterfaceClient.h).

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

struct KAPInvalid {};        // makes an empty identity or an empty lock
struct KAPAlreadyMarked {};  // adopts a mark that the item already has

// A reference to the identity under which an item is filed, or to none.
// Ownership: holds one reference, released on destruction. The last release purges the item.
// Errors: CKAPError "couldn't create cacheID" when the host makes no identity.
// Threads: a plain value.
class CKAPCacheID : public TKAPReference<KAPCacheInterface, KAPCacheID> {
 public:
  // A new identity. Deprecated: New.
  KAP_DEPRECATED("use CKAPCacheID::New()") CKAPCacheID();
  [[nodiscard]] static CKAPCacheID New();
  explicit CKAPCacheID(KAPInvalid) noexcept {}  // none
  using TKAPReference::TKAPReference;
};

// A lock on a cached item, which is not purged while the lock exists; or an empty lock.
// Ownership: the item belongs to the cache. The lock holds one mark on it and one reference to its
//   identity, both released on destruction, which never throws.
// Threads: a plain value.
class CKAPCacheLock {
 public:
  // An empty lock.
  explicit CKAPCacheLock(KAPInvalid) noexcept : fID(KAPInvalid()) {}
  // Marks the item. The lock is empty when `item` is null or has been purged, which is not an
  // error.
  CKAPCacheLock(CKAPCacheID id, void* item);
  // Adopts a mark that the item already has. A null item makes an empty lock.
  CKAPCacheLock(CKAPCacheID id, void* item, KAPAlreadyMarked) noexcept
      : fID(std::move(id)), fItem(item) {}
  // The same from the handle of an identity: adds a reference to it, or adopts one. An item is
  // never filed under a new identity yet.
  CKAPCacheLock(KAPCacheID* id, void* item) : CKAPCacheLock(CKAPCacheID(id), item) {}
  CKAPCacheLock(KAPCacheID* id, void* item, KAPAdopt adopt)
      : CKAPCacheLock(CKAPCacheID(id, adopt), item) {}
  CKAPCacheLock(KAPCacheID* id, void* item, KAPAlreadyMarked marked)
      : CKAPCacheLock(CKAPCacheID(id), item, marked) {}
  CKAPCacheLock(KAPCacheID* id, void* item, KAPAdopt adopt, KAPAlreadyMarked marked) noexcept
      : CKAPCacheLock(CKAPCacheID(id, adopt), item, marked) {}
  template <class... Tags>
  CKAPCacheLock(TKAPNewHandle<KAPCacheID> id, void* item, Tags...) = delete;
  // Adds a mark.
  CKAPCacheLock(const CKAPCacheLock& other) : CKAPCacheLock(other.fID, other.fItem) {}
  // Takes over the mark.
  CKAPCacheLock(CKAPCacheLock&& other) noexcept
      : fID(std::move(other.fID)), fItem(std::exchange(other.fItem, nullptr)) {}
  CKAPCacheLock& operator=(CKAPCacheLock other) noexcept {
    std::swap(fID, other.fID);
    std::swap(fItem, other.fItem);
    return *this;
  }
  ~CKAPCacheLock();

  void* Item() const noexcept { return fItem; }  // borrowed from the cache; null for an empty lock
  // Whether there is an item.
  explicit operator bool() const noexcept { return fItem != nullptr; }

  // Set and return the cost of the item in bytes, as its owner estimates it. An empty lock: does
  // nothing, and returns 0.
  void UpdateCost(std::size_t cost);
  std::size_t ReturnCost() const;

 private:
  CKAPCacheID fID;
  void* fItem = nullptr;
};

// A purge in progress, or none: frees memory item by item, as far as the caller needs it.
//
//   for (CKAPCachePurge purge = CKAPCachePurge::New(); IsShort() && purge.PurgeNextBlock();) {}
//
// Ownership: owns the purge, which ends on destruction.
// Errors: New throws std::bad_alloc when the host makes no purge.
// Threads: a plain value; one thread at a time per purge.
class CKAPCachePurge {
 public:
  CKAPCachePurge() noexcept = default;
  // A new purge.
  [[nodiscard]] static CKAPCachePurge New();
  CKAPCachePurge(CKAPCachePurge&& other) noexcept : fPurge(std::exchange(other.fPurge, nullptr)) {}
  CKAPCachePurge& operator=(CKAPCachePurge other) noexcept {
    std::swap(fPurge, other.fPurge);
    return *this;
  }
  ~CKAPCachePurge();

  // Purges the item used longest ago. False: nothing is left to purge, or there is no purge.
  bool PurgeNextBlock();

 private:
  KAPCachePurge* fPurge = nullptr;
};

// A reference to a set of identities, or to none: what a job has used so far, for example.
// Ownership: holds one reference, released on destruction; copies share the set.
// Errors: New throws std::bad_alloc when the host makes no set. Calls on an empty reference do
//   nothing, and SearchForID returns false.
// Threads: a plain value; any thread may use the set.
class CKAPCacheSet
    : public TKAPReference<KAPCacheInterface, KAPCacheSet, "AddRefCacheSet", "DeleteCacheSet"> {
 public:
  using TKAPReference::TKAPReference;
  // A new set, which is empty.
  [[nodiscard]] static CKAPCacheSet New();

  // Whether the set contains the identity. Deliberate: adds the identity if not, which is the only
  // way to add one. A host without memory for it reports that and adds nothing.
  bool SearchForID(const CKAPCacheID& id);
  void RemoveID(const CKAPCacheID& id);  // one that is not in the set is ignored
  void RemoveIDs();                      // all of them
};

// The cache as a whole. Static only.
// Threads: any, except PurgeAllStaticCaches [binding thread].
class CKAPCache {
 public:
  // A new identity: one reference for the caller. CKAPError "couldn't create cacheID" when the host
  // makes none.
  static TKAPNewHandle<KAPCacheID> NewCacheID();

  // Files an item that costs `cost` bytes. The cache owns it and passes it to `purgeItem` when it
  // is purged. False: the identity has an item already or the host fails, and the item stays the
  // caller's.
  [[nodiscard]] static bool Add(const CKAPCacheID& id, void* item, std::size_t cost,
                                KAPDeleteProc purgeItem);
  // A lock on the item that is filed under the identity; empty when it was purged.
  [[nodiscard]] static CKAPCacheLock Attach(const CKAPCacheID& id);

  static unsigned long GetCacheTime();    // a counter that grows with every use of the cache
  static std::size_t CurrentCacheSize();  // the cost of all items, in bytes
  static void PurgeAll();                 // purges every item without a lock
  // Clears the static caches of all components: calls Clear of each CKAPStaticCacheBase.
  static void PurgeAllStaticCaches();
};

}  // namespace KAP_T_MT
