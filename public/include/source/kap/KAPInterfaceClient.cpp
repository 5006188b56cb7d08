// SPDX-License-Identifier: MIT
#include "kap/KAPInterfaceClient.h"

#include "kap/KAPBinder.h"
#include "source/kap/KAPBinding.h"

namespace KAP_T_MT {

void* KAPGetProcAddress(const char* interfaceName, const char* methodName, const char* procName) {
  void* proc = KAPQueryProcAddress(interfaceName, methodName, procName);
  if (!proc && gFinishedInit) KAPThrowLoadFailure(KAPLoadOutcome::kMissingProcedure);
  return proc;
}

int KAPLoadProcTable(const _t_KAPFTabEntry* entries, std::size_t count, const char* interfaceName,
                     void** out, int) {
  const KAPLoadOutcome outcome = KAPFetchProcs(entries, count, interfaceName,
                                               [out](std::size_t i, void* proc) { out[i] = proc; });
  if (outcome == KAPLoadOutcome::kMissingProcedure) KAPThrowLoadFailure(outcome);
  return outcome == KAPLoadOutcome::kLoaded ? 1 : 0;
}

}  // namespace KAP_T_MT
