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
  KAPStringAtom* const atom = gAtom;
  StopWell();
  if (atom) DeleteAtom(atom);
  gSecond = nullptr;  // a call at the end would be a jump, without a frame to report
}
double Answer() noexcept { return 42; }
