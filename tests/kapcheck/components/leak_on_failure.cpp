// SPDX-License-Identifier: MIT
#include "Small.h"

// Keeps the first of two atoms when it cannot have the second.
static KAPStringAtom *gFirst = nullptr, *gSecond = nullptr;
bool Start() {
  if (!StartWell()) return false;
  gFirst = NewAtom("forgotten");
  gSecond = NewAtom("not there");
  return gSecond;
}
void Stop() {
  if (gSecond) DeleteAtom(gFirst);
  DeleteAtom(gSecond);
  gFirst = gSecond = nullptr;
  StopWell();
}
double Answer() noexcept { return 42; }
