// SPDX-License-Identifier: MIT
#include "Small.h"

// Succeeds although the host did not register its second interface.
bool Start() {
  if (!StartWell()) return false;
  Proc<KAPBinderInterface, "KAPRegisterProcAddress">()("OtherInterface", "Answer", "AnswerProc",
                                                       reinterpret_cast<void*>(&Answer));
  return true;
}
void Stop() {
  if (!gIsRegistered) return;
  if (const auto proc = Proc<KAPBinderInterface, "KAPUnregisterInterface">()) {
    proc("OtherInterface");
  }
  StopWell();
}
double Answer() noexcept { return 42; }
