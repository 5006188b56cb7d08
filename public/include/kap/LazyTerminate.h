#pragma once

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// An object, mostly a static one, that takes part in binding and unbinding: this is how code that
// stands on the runtime registers what must be undone when the binding ends. The runtime walks its
// list of members in the order in which they joined.
//
//   struct Names : LazyTerminate {
//     void Terminate() override { fAtoms.clear(); }      // the host is there: release
//     void Kill() noexcept override { ...forget... }     // the host may be gone: do not call it
//     std::vector<CKAPStringAtom> fAtoms;
//   } gNames;
//
// Threads: construction, destruction and the three operations belong to the thread that binds.
class LazyTerminate {
 public:
  LazyTerminate() noexcept { Join(); }
  virtual ~LazyTerminate();
  LazyTerminate(const LazyTerminate&) = delete;
  LazyTerminate& operator=(const LazyTerminate&) = delete;

  // Called when the runtime has bound itself. False, or an exception, fails the binding.
  virtual bool Initialize() { return true; }
  // Called when the runtime is about to unbind itself: release what came from the host.
  virtual void Terminate() {}
  // Called at process exit: forget what came from the host, without calling it.
  virtual void Kill() noexcept {}

  // For KAPClient. InitializeAll: when a member fails, those before it are terminated again and the
  // result is false.
  static bool InitializeAll();
  static void TerminateAll();
  static void KillAll() noexcept;

 protected:
  struct JoinLater {};
  // For static objects that are initialised at compile time, and so cannot enter a list by then: the
  // object joins when it first holds something of the host.
  constexpr explicit LazyTerminate(JoinLater) noexcept {}
  // Joins the list, once. Any thread.
  void Join() noexcept;

 private:
  static void TerminateBefore(const LazyTerminate* end);

  static constinit LazyTerminate* fList;  // the first member
  static constinit LazyTerminate* fTail;

  LazyTerminate* fNext = nullptr;
  LazyTerminate* fPrevious = nullptr;
  bool fJoined = false;
};

}  // namespace KAP_T_MT
