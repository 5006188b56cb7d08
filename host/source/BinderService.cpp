#include <new>

#include "Gate.h"
#include "HostState.h"
#include "Services.h"

// The binder's own procedures, under the interface name "KAP". Their method names are their
// procedure names.

namespace KAPHost {

namespace {

int RegisterProcAddress(const char* interfaceName, const char* methodName, const char* procName,
                        void* proc) noexcept {
  HostState* state = HostState::Current();
  if (state == nullptr) return 0;
  try {
    return state->RegisterForComponent(interfaceName, methodName, procName, proc) ? 1 : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

void ReportError(const char* message) noexcept {
  Report(message != nullptr ? message : "(a report without a message)");
}

void UnregisterInterface(const char* interfaceName) noexcept {
  HostState* state = HostState::Current();
  if (state != nullptr && interfaceName != nullptr) state->fBinder.Unregister(interfaceName);
}

unsigned long* GetUnregisterCountAddr() noexcept { return Binder::UnregisterCountAddr(); }

// Components must expect calls from any thread.
int IsMultiThreaded() noexcept { return 1; }

template <class Proc>
void RegisterOwn(Binder& binder, const char* name, Proc* proc) {
  binder.Register("KAP", name, name, reinterpret_cast<void*>(proc));
}

void RegisterBinder(Binder& binder) {
  RegisterOwn(binder, "KAPRegisterProcAddress", &RegisterProcAddress);
  RegisterOwn(binder, "KAPReportError", &ReportError);
  RegisterOwn(binder, "KAPUnregisterInterface", &UnregisterInterface);
  RegisterOwn(binder, "KAPGetUnregisterCountAddr", &GetUnregisterCountAddr);
  RegisterOwn(binder, "KAPIsMultiThreaded", &IsMultiThreaded);
}

}  // namespace

const Service kBinderService = {&RegisterBinder, nullptr};

}  // namespace KAPHost
