// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "Small.h"

// Crashes when the host has no cache. A null procedure would be called; abort makes the crash the
// same one in every build.
bool Start() {
  if (!StartWell()) return false;
  if (!Proc<KAPCacheInterface, "GetCacheTime">()) std::abort();
  return true;
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
