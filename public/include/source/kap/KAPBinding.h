// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"
#include "kap/KAPTypes.h"

// The state of the binding: the bottom of the client runtime, which includes nothing that is built
// on it. What must be undone when the binding ends registers itself instead: tables of procedures
// with KAPProcTable when they are loaded, static objects with LazyTerminate.
//
// Threads: the binding thread writes this state while no other thread uses the runtime.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

extern constinit KAPGetProcAddressProc gGetProc;            // null: no host bound
extern constinit const unsigned long* gKAPUnregisterCount;  // never null
extern constinit bool
    gFinishedInit;  // false while binding: a missing procedure is not an error yet

// Stores the callback and fetches the binder's own procedures. False when the binder lacks one.
// Deliberate: the callback stays stored then; see KAPClientInit.
bool KAPFetchBinder(KAPGetProcAddressProc getProc);
void KAPForgetBinder() noexcept;

// The current value of the host's unregister counter, which any thread may increment.
inline unsigned long KAPUnregisterCountNow() noexcept {
  return __atomic_load_n(gKAPUnregisterCount, __ATOMIC_ACQUIRE);
}

// Fetches the procedures of an interface from the last entry to the first and passes each one to
// `store(index, procedure)`. A missing procedure ends the walk. While binding, `store` receives its
// null; once the runtime is bound it does not, and the slot keeps what it holds. No host bound:
// `store` receives null for the last entry.
template <class Store>
KAPLoadOutcome KAPFetchProcs(const _t_KAPFTabEntry* entries, std::size_t count,
                             const char* interfaceName, Store store) {
  if (!gGetProc) {
    if (count != 0) store(count - 1, nullptr);
    return KAPLoadOutcome::kUnavailable;
  }
  for (std::size_t i = count; i-- != 0;) {
    void* proc = gGetProc(interfaceName, entries[i].fMethodName, entries[i].fProcName);
    if (!proc && gFinishedInit) return KAPLoadOutcome::kMissingProcedure;
    store(i, proc);
    if (!proc) return KAPLoadOutcome::kUnavailable;
  }
  return KAPLoadOutcome::kLoaded;
}

}  // namespace KAP_T_MT
