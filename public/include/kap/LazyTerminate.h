#pragma once

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A static object that takes part in binding and unbinding. It links itself into the runtime's list
// when it is constructed and out of it when it is destroyed; the list is walked in the order of
// construction. Threads: construction, destruction and the three operations belong to the one
// controlling thread.
class LazyTerminate {
 public:
  LazyTerminate() noexcept;
  virtual ~LazyTerminate();
  LazyTerminate(const LazyTerminate&) = delete;
  LazyTerminate& operator=(const LazyTerminate&) = delete;

  // Called when the runtime has bound itself. False, or an exception, fails the binding.
  virtual bool Initialize() { return true; }
  // Called when the runtime is about to unbind itself: give back what came from the host.
  virtual void Terminate() {}
  // Called at process exit: forget what came from the host, without calling it.
  virtual void Kill() noexcept {}

  // Initializes every member. When one fails, those before it are terminated again and the result
  // is false.
  static bool InitializeAll();
  static void TerminateAll();
  static void KillAll() noexcept;

 private:
  static void TerminateBefore(const LazyTerminate* end);

  static constinit LazyTerminate* fList;  // the first member
  static constinit LazyTerminate* fTail;

  LazyTerminate* fNext = nullptr;
  LazyTerminate* fPrevious = nullptr;
};

}  // namespace KAP_T_MT
