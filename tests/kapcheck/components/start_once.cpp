// SPDX-License-Identifier: MIT
#include "Small.h"

// Cannot be initialised a second time.
static bool gHasEnded = false;
bool Start() { return !gHasEnded && StartWell(); }
void Stop() {
  gHasEnded = gIsRegistered;
  StopWell();
}
double Answer() noexcept { return 42; }
