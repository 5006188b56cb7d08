// SPDX-License-Identifier: MIT
#include <stdexcept>

#include "Small.h"

// Lets an exception out of a registered procedure when the host has no memory for an atom.
static double ThrowingAnswer() {
  KAPStringAtom* const atom = NewAtom("an atom");
  if (!atom) throw std::runtime_error("no atom");
  DeleteAtom(atom);
  return 42;
}
bool Start() { return StartWell() && RegisterUnder(AnswerInterface::kName, &ThrowingAnswer); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
