// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPBinderInterface.h"
#include "kap/KAPInterface.h"
#include "kap/KAPTypes.h"

// The client side of the binder: looking up procedures, registering one's own, reporting failures.
//
//   if (!KAPRegisterInterface<TotalsInterface>(&TotalsSumProc)) return 0;  // all procedures
//   KAPReportError("Totals: no memory for the index");
//   KAPUnregisterInterface(TotalsInterface::kName);
//
// KAPClient.h binds the runtime to a host. While no host is bound, no function here calls anything:
// the result is null, 0 or false.
//
// Ownership: names and messages are borrowed for the call; the binder copies what it keeps.
// Errors: none of these functions throws; the result shows success or failure.
// Threads: any.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Whether the runtime knows a host. True from the start of KAPClientInit to the end of
// KAPClientTerminate or KAPClientKill; also after a failed KAPClientInit, which keeps the callback
// unless that is null.
bool KAPIsBound() noexcept;

// The procedure registered under the three names; null when there is none.
void* KAPQueryProcAddress(const char* interfaceName, const char* methodName, const char* procName);

// Registers one procedure, replacing one that has the same three names. Nonzero on success; 0 when
// the host fails.
[[nodiscard]] int KAPRegisterProcAddress(const char* interfaceName, const char* methodName,
                                         const char* procName, void* proc);

// Registers `entries` in order and stops at the first failure. 1 when all are registered, also for
// a count of 0; else 0. Entries registered before the failure stay registered: the caller undoes
// them with KAPUnregisterInterface, as it does at its end.
[[nodiscard]] int KAPRegisterProcTable(const _t_KAPFTabRegEntry* entries, std::size_t count,
                                       const char* interfaceName);

// Registers `procs` as the methods that `Interface` declares, under an interface name of the
// component's own, for containers that the component makes:
//
//   if (!KAPRegisterMethods<KAPDataStoreInterface>("TotalsStoreInterface", &GetBlock)) return 0;
//   ...
//   const CKAPStringAtom impl("TotalsStoreImpl"), interface("TotalsStoreInterface");
//   CKAPDataStore store(CKAPContainer::NewFullContainer(object, impl, interface, &Delete));
//
// Clients find the methods through the container, so the name is free; Interface::kName is not. The
// binder keeps one procedure per name, so a second component that registered its methods under the
// shared name would replace those of the first, for the containers of both. Otherwise as
// KAPRegisterInterface.
template <class Interface, class... Procs>
[[nodiscard]] bool KAPRegisterMethods(const char* interfaceName, Procs... procs) {
  if constexpr (Interface::template CheckProcs<Procs...>()) {
    const auto entries = Interface::Registration(procs...);
    return KAPRegisterProcTable(entries.data(), entries.size(), interfaceName) != 0;
  }
  return false;
}

// Registers `procs` as the procedures of an interface, in slot order. As KAPRegisterProcTable, with
// function types checked at compile time; each procedure must be `noexcept`.
template <class Interface, class... Procs>
[[nodiscard]] bool KAPRegisterInterface(Procs... procs) {
  return KAPRegisterMethods<Interface>(Interface::kName, procs...);
}

// Removes every procedure registered under the interface name, whichever component registered it.
void KAPUnregisterInterface(const char* interfaceName);

// Passes a message to the host's error channel. Null becomes "unknown KAP error". While no host is
// bound the message is dropped: there is nowhere left to report it.
void KAPReportError(const char* message) noexcept;

// Whether the host says that it calls components from several threads. The runtime itself never
// asks and always locks, which is right in either case.
int KAPIsMultiThreaded();

// Deliberate no-ops, for components that install them; the runtime does not use them.
// KAPNoOpFunction is a procedure for slots that must not reach the host. KAPAssertNoObjects is a
// hook for hosts that check for live objects, of which the runtime has none to report.
void KAPNoOpFunction() noexcept;
void KAPAssertNoObjects() noexcept;

}  // namespace KAP_T_MT
