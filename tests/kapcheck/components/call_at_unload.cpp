// SPDX-License-Identifier: MIT
#include "Small.h"

// Releases an atom in the destructor of a static object, after its termination.
struct LateRelease {
  ~LateRelease() {
    if (!gIsRegistered) DeleteAtom(nullptr);
  }
};
static LateRelease gLateRelease;
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
