// SPDX-License-Identifier: MIT
#include <stdexcept>

#include "Small.h"

// Throws when it gets no callback.
bool Start() {
  if (!gGetProc) throw std::invalid_argument("no callback");
  return StartWell();
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
