// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "Small.h"

// Looks whether there is a cache, but not whether it has all of its procedures.
bool Start() {
  if (!StartWell()) return false;
  const bool hasCache = Proc<KAPCacheInterface, "NewCacheID">() != nullptr;
  if (hasCache && !Proc<KAPCacheInterface, "GetCacheTime">()) std::abort();
  return true;
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
