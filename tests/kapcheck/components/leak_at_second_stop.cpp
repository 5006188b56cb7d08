// SPDX-License-Identifier: MIT
#include "Small.h"

// Takes an atom when it is terminated twice in a row.
static bool gWasStop = false;
bool Start() {
  gWasStop = false;
  return StartWell();
}
void Stop() {
  if (gWasStop) NewAtom("forgotten");
  gWasStop = gGetProc != nullptr;
  StopWell();
}
double Answer() noexcept { return 42; }
