#pragma once

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
  // Calls each procedure without the lock: it may add and remove. Throws std::bad_alloc.
  void CallAll();

 private:
  std::mutex fMutex;
  std::vector<KAP_T_MT::KAPClientPurgeProc> fProcs;
};

}  // namespace KAPHost
