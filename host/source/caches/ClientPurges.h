// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

#include "kap/KAPCacheInterface.h"

namespace KAPHost {

// The procedures that empty the components' static caches. Thread-safe.
class ClientPurges {
 public:
  // Throws std::bad_alloc.
  void Add(KAP_T_MT::KAPClientPurgeProc clearAll);
  // Undoes one Add.
  void Remove(KAP_T_MT::KAPClientPurgeProc clearAll) noexcept;
  // Removes the procedures for which matches(procedure) is true. Returns how many there were.
  template <class Matches>
  std::size_t RemoveIf(Matches matches) noexcept {
    const std::lock_guard lock(fMutex);
    return std::erase_if(fProcs, matches);
  }
  // Calls each procedure without the lock: it may add and remove. One that another has removed is
  // not called, since its library may be unloaded by then. Throws std::bad_alloc.
  void CallAll();

 private:
  bool Has(KAP_T_MT::KAPClientPurgeProc clearAll) noexcept;

  std::mutex fMutex;
  std::vector<KAP_T_MT::KAPClientPurgeProc> fProcs;
};

}  // namespace KAPHost
