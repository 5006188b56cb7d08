// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPTypes.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A component's own cache, usually a static object. The runtime clears it when the host purges all
// static caches and when the binding ends.
//
//   struct GlyphCache : KAP_T_MT::CKAPStaticCacheBase {
//     void Clear() override { fGlyphs.clear(); }         // the host is there: release
//     void Kill() noexcept override { ...forget... }     // the host may be gone: do not call it
//     std::map<int, KAP_T_MT::TKAPSharedBuffer<char>> fGlyphs;
//   } gGlyphs;
//
// The constructor links the cache into the component's list, the destructor unlinks it. The host
// knows all caches of a component by one procedure, and knows that procedure exactly while the
// runtime is bound and the list is not empty.
// Errors: constructing the first cache while the runtime is bound throws when the host has no cache
//   interface (KAPInterfaceClient.h). Destruction never throws.
// Threads: construction, destruction and the static functions belong to the binding thread. Clear
//   runs on the thread that purges.
class CKAPStaticCacheBase {
 public:
  CKAPStaticCacheBase();
  virtual ~CKAPStaticCacheBase();
  CKAPStaticCacheBase(const CKAPStaticCacheBase&) = delete;
  CKAPStaticCacheBase& operator=(const CKAPStaticCacheBase&) = delete;

  // Releases everything the cache holds. What it throws is reported to the binder, and the other
  // caches are still cleared.
  virtual void Clear() = 0;
  // Forgets everything without calling the host. Called at process exit.
  virtual void Kill() noexcept = 0;

  // Whether the cache may take up references of the host: true from the end of binding to the start
  // of unbinding.
  static bool IsAccepting() noexcept { return fAcceptingCaches; }

  // For KAPClient. The last step of binding: everything that a cache may need is there. Throws when
  // there are caches but the host has no cache interface; caches are then not accepted.
  static void LinkToKAP();
  // The first step of unbinding: removes the procedure from the host and clears all caches, while
  // everything they hold can still be released.
  static void UnlinkFromKAP() noexcept;
  // The first step at process exit: calls Kill on all caches.
  static void KillAll() noexcept;

 private:
  static void AddClientPurge();
  static void RemoveClientPurge() noexcept;
  static void ClearAll() noexcept;

  static constinit CKAPStaticCacheBase* fList;  // the most recently constructed cache
  static constinit bool fAcceptingCaches;

  CKAPStaticCacheBase* fNext = nullptr;
  CKAPStaticCacheBase* fPrevious = nullptr;
};

}  // namespace KAP_T_MT
