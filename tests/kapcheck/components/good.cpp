// SPDX-License-Identifier: MIT
#include "Small.h"

// Breaks no rule.
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
