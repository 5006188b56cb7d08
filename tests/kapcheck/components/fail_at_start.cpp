// SPDX-License-Identifier: MIT
#include "Small.h"

// Cannot be initialised.
bool Start() {
  if (const auto report = Proc<KAPBinderInterface, "KAPReportError">()) report("no licence");
  return false;
}
void Stop() {}
double Answer() noexcept { return 42; }
