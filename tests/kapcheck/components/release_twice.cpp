// SPDX-License-Identifier: MIT
#include "Small.h"

// Releases one of its two atoms twice, instead of both.
static KAPStringAtom* gSecond = nullptr;
bool Start() {
  if (!StartWell()) return false;
  gSecond = NewAtom("forgotten");
  return gSecond;
}
void Stop() {
  if (gIsRegistered) DeleteAtom(gAtom);
  StopWell();
}
double Answer() noexcept { return 42; }
