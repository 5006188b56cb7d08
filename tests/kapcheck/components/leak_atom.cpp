// SPDX-License-Identifier: MIT
#include "Small.h"

// Keeps an atom.
bool Start() {
  if (!StartWell()) return false;
  NewAtom("forgotten");
  return true;
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
