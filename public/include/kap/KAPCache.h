#pragma once

#include <cstddef>
#include <utility>

#include "kap/KAPCacheInterface.h"
#include "kap/KAPReference.h"

// The host's cache: items that it may purge when memory is short. An item is filed under an
// identity and is not purged while a lock on it exists. The host decides what to purge first.
//
//   const CKAPCacheID id;
//   if (!CKAPCache::Add(id, page, cost, &DeletePage)) DeletePage(page);
//   ...
//   if (const CKAPCacheLock lock = CKAPCache::Attach(id)) {
//     Draw(*static_cast<Page*>(lock.Item()));      // stays while `lock` lives
//   } else {
//     ...                                          // purged meanwhile: make it again
//   }
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
  CKAPCacheID();                                // a new identity
  explicit CKAPCacheID(KAPInvalid) noexcept {}  // none
  using TKAPReference::TKAPReference;
};

// A lock on a cached item, which is not purged while the lock exists; or an empty lock.
// Ownership: the item belongs to the cache. The lock holds one mark on it and one reference to its
//   identity, both released on destruction, which never throws.
// Threads: a plain value.
class CKAPCacheLock {
 public:
  explicit CKAPCacheLock(KAPInvalid) noexcept : fID(KAPInvalid()) {}
  // Marks the item. The lock is empty when `item` is null or has been purged, which is not an
  // error.
  CKAPCacheLock(CKAPCacheID id, void* item);
  // Adopts a mark that the item already has. A null item makes an empty lock.
  CKAPCacheLock(CKAPCacheID id, void* item, KAPAlreadyMarked) noexcept
      : fID(std::move(id)), fItem(item) {}
  // Adds a mark.
  CKAPCacheLock(const CKAPCacheLock& other) : CKAPCacheLock(other.fID, other.fItem) {}
  CKAPCacheLock(CKAPCacheLock&& other) noexcept
      : fID(std::move(other.fID)), fItem(std::exchange(other.fItem, nullptr)) {}
  CKAPCacheLock& operator=(CKAPCacheLock other) noexcept {
    std::swap(fID, other.fID);
    std::swap(fItem, other.fItem);
    return *this;
  }
  ~CKAPCacheLock();

  void* Item() const noexcept { return fItem; }  // borrowed from the cache; null for an empty lock
  explicit operator bool() const noexcept { return fItem != nullptr; }

  // Set and return the cost of the item in bytes, as its owner estimates it. An empty lock: does
  // nothing, and returns 0.
  void UpdateCost(std::size_t cost);
  std::size_t ReturnCost() const;

 private:
  CKAPCacheID fID;
  void* fItem = nullptr;
};

// The cache as a whole. Static only.
// Threads: any.
class CKAPCache {
 public:
  // A new identity: one reference for the caller. CKAPError "couldn't create cacheID" when the host
  // makes none.
  static KAPCacheID* NewCacheID();

  // Files an item that costs `cost` bytes. The cache owns it and passes it to `purgeItem` when it
  // is purged. False: the identity has an item already or the host fails, and the item stays the
  // caller's.
  static bool Add(const CKAPCacheID& id, void* item, std::size_t cost, KAPDeleteProc purgeItem);
  // A lock on the item that is filed under the identity; empty when it was purged.
  static CKAPCacheLock Attach(const CKAPCacheID& id);

  static std::size_t CurrentCacheSize();  // the cost of all items, in bytes
  static void PurgeAll();                 // purges every item without a lock
};

}  // namespace KAP_T_MT
