// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include "Small.h"

// Keeps its own library in memory as soon as it is initialised.
bool Start() {
  Dl_info info = {};
  if (::dladdr(reinterpret_cast<void*>(&Start), &info) == 0) return false;
  return ::dlopen(info.dli_fname, RTLD_NOW) && StartWell();
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
