#pragma once

#include <cstddef>
#include <utility>

#include "kap/KAPCacheInterface.h"
#include "kap/KAPReference.h"

// Items that the host may purge when memory is short. An item is filed under an identity and stays
// while somebody holds a lock on it; what is purged first is the host's decision.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

struct KAPInvalid {};        // asks for an identity, or a lock, that stands for nothing
struct KAPAlreadyMarked {};  // says that an item is marked not purgeable already

// A reference to the identity that an item is filed under, or to none.
// Errors: CKAPError "couldn't create cacheID" when the host gives no new one.
class CKAPCacheID : public TKAPReference<KAPCacheInterface, KAPCacheID> {
 public:
  CKAPCacheID();  // a new one
  explicit CKAPCacheID(KAPInvalid) noexcept {}
  using TKAPReference::TKAPReference;
};

// Keeps an item from being purged while it lives, and its identity alive; or holds no item.
// Ownership: the item stays the cache's. Destruction marks the item purgeable and never throws.
// Threads: as a plain value.
class CKAPCacheLock {
 public:
  explicit CKAPCacheLock(KAPInvalid) noexcept : fID(KAPInvalid()) {}
  // Marks the item. Holds no item when the host refuses because it has been purged.
  CKAPCacheLock(CKAPCacheID id, void* item);
  // Takes over a mark that is there already.
  CKAPCacheLock(CKAPCacheID id, void* item, KAPAlreadyMarked) noexcept
      : fID(std::move(id)), fItem(item) {}
  // One mark more.
  CKAPCacheLock(const CKAPCacheLock& other) : CKAPCacheLock(other.fID, other.fItem) {}
  CKAPCacheLock(CKAPCacheLock&& other) noexcept
      : fID(std::move(other.fID)), fItem(std::exchange(other.fItem, nullptr)) {}
  CKAPCacheLock& operator=(CKAPCacheLock other) noexcept {
    std::swap(fID, other.fID);
    std::swap(fItem, other.fItem);
    return *this;
  }
  ~CKAPCacheLock();

  void* Item() const noexcept { return fItem; }  // null: none
  explicit operator bool() const noexcept { return fItem != nullptr; }

  // What the item is said to cost; nothing, and 0, without an item.
  void UpdateCost(std::size_t cost);
  std::size_t ReturnCost() const;

 private:
  CKAPCacheID fID;
  void* fItem = nullptr;
};

// The host's cache as a whole. Static only. Any thread.
class CKAPCache {
 public:
  // A new identity, whose reference is the caller's. CKAPError "couldn't create cacheID".
  static KAPCacheID* NewCacheID();

  // Files an item, which is handed to `purgeItem` once it is purged. False: the host refused, and
  // the item stays the caller's.
  static bool Add(const CKAPCacheID& id, void* item, std::size_t cost, KAPDeleteProc purgeItem);
  // A lock on the item that is filed under the identity, on none when it was purged.
  static CKAPCacheLock Attach(const CKAPCacheID& id);

  static std::size_t CurrentCacheSize();
  static void PurgeAll();
};

}  // namespace KAP_T_MT
