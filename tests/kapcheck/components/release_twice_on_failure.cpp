// SPDX-License-Identifier: MIT
#include "Small.h"

// Releases the first of two atoms twice when it cannot have the second.
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept {
  KAPStringAtom* const first = NewAtom("first");
  KAPStringAtom* const second = first ? NewAtom("second") : nullptr;
  if (first && !second) DeleteAtom(first);
  DeleteAtom(first);
  DeleteAtom(second);
  return 42;
}
