#pragma once

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A cache of the component's own, mostly a static object, that is emptied when the host purges all
// static caches and when the runtime unbinds itself. It links itself into the runtime's list when
// it is constructed and out of it when it is destroyed. The host is told of all of them by one
// procedure, and knows it exactly while caches are accepted and there are any.
// Errors: constructing the first one in a bound runtime raises a CKAPError when the host has no
//   cache interface; destruction never throws.
// Threads: construction, destruction and the static operations belong to the one controlling
//   thread; Clear is also called on the thread that purges.
class CKAPStaticCacheBase {
 public:
  CKAPStaticCacheBase();
  virtual ~CKAPStaticCacheBase();
  CKAPStaticCacheBase(const CKAPStaticCacheBase&) = delete;
  CKAPStaticCacheBase& operator=(const CKAPStaticCacheBase&) = delete;

  // Give everything back. What it raises is reported to the binder.
  virtual void Clear() = 0;
  // Called at process exit: forget everything, without calling the host.
  virtual void Kill() noexcept = 0;

  // Whether the runtime is bound, so that a cache may take up what belongs to the host.
  static bool IsAccepting() noexcept { return fAcceptingCaches; }

  // The last step of binding. When it raises, for want of the cache interface, nothing is accepted.
  static void LinkToKAP();
  // The first step of unbinding: the host forgets the caches, and all are cleared.
  static void UnlinkFromKAP() noexcept;
  // The first step at process exit.
  static void KillAll() noexcept;

 private:
  static void AddClientPurge();
  static void RemoveClientPurge() noexcept;
  static void ClearAll() noexcept;

  static constinit CKAPStaticCacheBase* fList;  // the last one constructed
  static constinit bool fAcceptingCaches;

  CKAPStaticCacheBase* fNext = nullptr;
  CKAPStaticCacheBase* fPrevious = nullptr;
};

}  // namespace KAP_T_MT
