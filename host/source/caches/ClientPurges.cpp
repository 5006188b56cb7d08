// SPDX-License-Identifier: MIT
#include "caches/ClientPurges.h"

#include <algorithm>

namespace KAPHost {

void ClientPurges::Add(KAP_T_MT::KAPClientPurgeProc clearAll) {
  const std::lock_guard lock(fMutex);
  fProcs.push_back(clearAll);
}

void ClientPurges::Remove(KAP_T_MT::KAPClientPurgeProc clearAll) noexcept {
  const std::lock_guard lock(fMutex);
  const auto found = std::find(fProcs.begin(), fProcs.end(), clearAll);
  if (found != fProcs.end()) fProcs.erase(found);
}

void ClientPurges::CallAll() {
  std::vector<KAP_T_MT::KAPClientPurgeProc> procs;
  {
    const std::lock_guard lock(fMutex);
    procs = fProcs;
  }
  for (const auto clearAll : procs) {
    if (Has(clearAll)) clearAll();
  }
}

bool ClientPurges::Has(KAP_T_MT::KAPClientPurgeProc clearAll) noexcept {
  const std::lock_guard lock(fMutex);
  return std::find(fProcs.begin(), fProcs.end(), clearAll) != fProcs.end();
}

}  // namespace KAPHost
