// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "Small.h"

// Looks whether there is a cache when it is used, but not whether it has all of its procedures.
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept {
  const bool hasCache = Proc<KAPCacheInterface, "NewCacheID">() != nullptr;
  if (hasCache && !Proc<KAPCacheInterface, "GetCacheTime">()) std::abort();
  return 42;
}
