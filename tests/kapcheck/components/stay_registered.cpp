// SPDX-License-Identifier: MIT
#include "Small.h"

// Does not unregister its interface.
bool Start() { return StartWell() && RegisterUnder("LeftInterface", &Answer); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
