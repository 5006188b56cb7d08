// SPDX-License-Identifier: MIT
#include <cstdio>

#include "Small.h"

// Writes to standard output.
bool Start() {
  std::printf("hello\n");
  return StartWell();
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
