// SPDX-License-Identifier: MIT
#include "Small.h"

// Makes its atom again when it is initialised a second time.
bool Start() {
  if (gIsRegistered) NewAtom("forgotten");
  return StartWell();
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
