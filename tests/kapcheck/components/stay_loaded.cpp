// SPDX-License-Identifier: MIT
#include "Small.h"

// Linked in such a way that dlclose does not unload it.
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
