#pragma once

#include <cstddef>

#include "kap/KAPBinderInterface.h"
#include "kap/KAPInterface.h"
#include "kap/KAPTypes.h"

// The client side of the binder: looking procedures up, registering one's own, reporting failures.
// KAPClient.h binds the runtime to a host; until then, and after the binding has ended, every
// function here does nothing and returns null, 0 or false.
//
// Any thread may call these functions. Texts passed in are borrowed for the call.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Whether the host can be called: the runtime is bound and the process-exit hook has not run.
bool KAPIsBound() noexcept;

// The procedure registered under the three names; null when there is none.
void* KAPQueryProcAddress(const char* interfaceName, const char* methodName, const char* procName);

// The outcome of loading the procedures of an interface.
enum class KAPLoadOutcome {
  kLoaded,
  kMissingProcedure,  // the runtime is bound, and the host lacks a procedure
  kUnavailable        // the runtime is not bound, or not yet: then nothing is an error
};

// Registers one procedure; nonzero on success.
int KAPRegisterProcAddress(const char* interfaceName, const char* methodName, const char* procName,
                           void* proc);

// Registers `entries` in order up to the first one that fails: 1 when all are registered (also when
// there are none), else 0. Procedures already registered stay registered.
int KAPRegisterProcTable(const _t_KAPFTabRegEntry* entries, std::size_t count,
                         const char* interfaceName);

// Registers `procs` as the procedures of an interface, in slot order; see KAPRegisterProcTable.
template <class Interface, class... Procs>
bool KAPRegisterInterface(Procs... procs) {
  const auto entries = Interface::Registration(procs...);
  return KAPRegisterProcTable(entries.data(), entries.size(), Interface::kName) != 0;
}

// Removes everything registered under the name, whichever component registered it.
void KAPUnregisterInterface(const char* interfaceName);

// Passes a message to the host's error channel; null counts as "unknown KAP error". Without a
// channel the message is dropped: there is nowhere left to report it.
void KAPReportError(const char* message) noexcept;

// The host's own word on whether it calls components from several threads. The runtime never asks:
// it always locks.
int KAPIsMultiThreaded();

// Deliberate no-ops: the procedure that a released handle meets after the binding, and a check that
// hosts may ask for.
void KAPNoOpFunction() noexcept;
void KAPAssertNoObjects() noexcept;

}  // namespace KAP_T_MT
