// SPDX-License-Identifier: MIT
#include "Small.h"

// Keeps the first of two atoms when it cannot have the second.
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept {
  KAPStringAtom* const first = NewAtom("forgotten");
  if (!first) return 0;
  KAPStringAtom* const second = NewAtom("not there");
  if (!second) return 0;
  DeleteAtom(first);
  DeleteAtom(second);
  return 42;
}
