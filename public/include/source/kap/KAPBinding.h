#pragma once

#include <cstddef>

#include "kap/KAPBinder.h"
#include "kap/KAPInterface.h"
#include "kap/KAPTypes.h"

// The binding that the runtime has: the bottom of the client runtime. It knows nothing of what stands
// on it; tables of procedures register themselves with KAPProcTable when they are loaded, and
// static objects with LazyTerminate.
//
// Written by the thread that binds, while no other thread uses the runtime.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

extern constinit KAPGetProcAddressProc gGetProc;  // null: not bound
extern constinit const unsigned long* gKAPUnregisterCount;
extern constinit bool gFinishedInit;  // whether a missing procedure is an error or only "false"

// Stores the callback and fetches the binder's own procedures. False when the binder lacks one; the
// callback stays stored, deliberately: unbinding is the way back.
bool KAPFetchBinder(KAPGetProcAddressProc getProc);
void KAPForgetBinder() noexcept;

// The host's unregister counter as it stands. The host raises it atomically, from any thread.
inline unsigned long KAPUnregisterCountNow() noexcept {
  return __atomic_load_n(gKAPUnregisterCount, __ATOMIC_ACQUIRE);
}

// Fetches the procedures of an interface from the last entry to the first, and hands each one, and
// the null that ends the walk, to `store(index, procedure)`. Once the runtime is bound a missing
// procedure is not stored: its slot keeps what it holds.
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
