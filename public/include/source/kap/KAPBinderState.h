#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"
#include "kap/KAPTypes.h"

// What the runtime keeps of the binder that it is bound to. Written by the controlling thread only.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

extern constinit KAPGetProcAddressProc gGetProc;  // null: not bound
extern constinit const unsigned long* gKAPUnregisterCount;
extern constinit bool gFinishedInit;  // whether a missing procedure is an error or only a "false"

// The host's counter as it stands. The host raises it atomically, from any thread.
inline unsigned long KAPUnregisterCountNow() noexcept {
  return __atomic_load_n(gKAPUnregisterCount, __ATOMIC_ACQUIRE);
}

enum class KAPLoadOutcome { kLoaded, kMissing, kUnbound };

// Fetches the procedures of an interface from the last entry to the first and hands each, and the
// null that ends the walk, to `store(index, procedure)`.
template <class Store>
KAPLoadOutcome KAPFetchProcs(const _t_KAPFTabEntry* entries, std::size_t count,
                             const char* interfaceName, Store store) {
  if (!gGetProc) {
    if (count != 0) store(count - 1, nullptr);
    return KAPLoadOutcome::kUnbound;
  }
  for (std::size_t i = count; i-- != 0;) {
    void* proc = gGetProc(interfaceName, entries[i].fMethodName, entries[i].fProcName);
    if (!proc && gFinishedInit) return KAPLoadOutcome::kMissing;
    store(i, proc);
    if (!proc) return KAPLoadOutcome::kMissing;
  }
  return KAPLoadOutcome::kLoaded;
}

// The answer of a load: true, false, or the error of a procedure that a bound runtime misses.
bool KAPAnswerLoad(KAPLoadOutcome outcome);

}  // namespace KAP_T_MT
