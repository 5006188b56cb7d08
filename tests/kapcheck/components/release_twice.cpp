// SPDX-License-Identifier: MIT
#include "Small.h"

// Releases an atom once too often.
bool Start() { return StartWell(); }
void Stop() {
  KAPStringAtom* const atom = gAtom;
  StopWell();
  if (atom) DeleteAtom(atom);
}
double Answer() noexcept { return 42; }
