// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "Small.h"

// Never returns from its initialisation.
bool Start() {
  for (;;) ::pause();
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
