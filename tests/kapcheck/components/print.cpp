// SPDX-License-Identifier: MIT
#include <cstdio>

#include "Small.h"

// Writes to standard output when something fails.
bool Start() {
  if (StartWell()) return true;
  std::printf("hello\n");
  return false;
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
