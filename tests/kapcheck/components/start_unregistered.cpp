// SPDX-License-Identifier: MIT
#include "Small.h"

// Succeeds although the host did not register its second interface.
bool Start() {
  if (!StartWell()) return false;
  RegisterUnder("OtherInterface", &Answer);
  return true;
}
void Stop() {
  if (!gIsRegistered) return;
  Unregister("OtherInterface");
  StopWell();
}
double Answer() noexcept { return 42; }
