// SPDX-License-Identifier: MIT
#include "Small.h"

// Does not do what its clients expect.
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept { return 41; }
