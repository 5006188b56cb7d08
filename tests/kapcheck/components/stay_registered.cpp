// SPDX-License-Identifier: MIT
#include "Small.h"

// Does not unregister its interface.
bool Start() {
  if (!StartWell()) return false;
  return Proc<KAPBinderInterface, "KAPRegisterProcAddress">()(
             "LeftInterface", "Answer", "AnswerProc", reinterpret_cast<void*>(&Answer)) != 0;
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
