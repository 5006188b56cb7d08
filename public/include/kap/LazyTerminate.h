// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPTypes.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// An object, usually a static one, that takes part in binding and unbinding. Code built on the
// runtime registers with it whatever must be undone when the binding ends; the runtime itself knows
// only this list. It walks the list in the order in which the members joined. Only the end of a
// binding takes two passes: members that join with their first use (JoinLater) are terminated after
// the others, which may use them once more.
//
//   struct Names : KAP_T_MT::LazyTerminate {
//     void Terminate() override { fAtoms.clear(); }      // the host is there: release
//     void Kill() noexcept override { ...forget... }     // the host may be gone: do not call it
//     std::vector<KAP_T_MT::CKAPStringAtom> fAtoms;
//   } gNames;
//
// Ownership: the list owns nothing; a member leaves it when it is destroyed.
// Threads: Join may run on any thread; everything else belongs to the binding thread.
class LazyTerminate {
 public:
  LazyTerminate() noexcept { Join(); }
  virtual ~LazyTerminate();
  LazyTerminate(const LazyTerminate&) = delete;
  LazyTerminate& operator=(const LazyTerminate&) = delete;

  // Called after the runtime is bound, for members that have joined before. A member that joins
  // while the runtime is bound is not initialised until the next binding, but it is terminated with
  // this one. Returning false or throwing fails KAPClientInit, which then returns false.
  virtual bool Initialize() { return true; }
  // Called before the runtime unbinds: release what came from the host. What it throws leaves the
  // members after it as they are; KAPClientTerminate rethrows it.
  virtual void Terminate() {}
  // Called at process exit: forget what came from the host, without calling the host.
  virtual void Kill() noexcept {}

  // For KAPClient: call the function of all members. InitializeAll returns false when a member
  // fails, after terminating the members before it; those after it are not called. What a member
  // throws then is dropped.
  static bool InitializeAll();
  static void TerminateAll();
  static void KillAll() noexcept;

 protected:
  struct JoinLater {};
  // For objects initialised at compile time, which cannot enter a list yet: such an object calls
  // Join when it first holds something of the host.
  constexpr explicit LazyTerminate(JoinLater) noexcept : fJoinsLater(true) {}
  // Joins the list; later calls do nothing.
  void Join() noexcept;

 private:
  static void TerminateBefore(const LazyTerminate* end) noexcept;

  static constinit LazyTerminate* fList;  // the first member
  static constinit LazyTerminate* fTail;

  LazyTerminate* fNext = nullptr;
  LazyTerminate* fPrevious = nullptr;
  bool fJoined = false;
  const bool fJoinsLater = false;
};

}  // namespace KAP_T_MT
