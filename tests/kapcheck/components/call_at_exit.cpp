// SPDX-License-Identifier: MIT
#include "Small.h"

// Releases its atom in the destructor of a static object unless it was terminated.
struct LateRelease {
  ~LateRelease() {
    if (gIsRegistered) DeleteAtom(gAtom);
  }
};
static LateRelease gLateRelease;
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
