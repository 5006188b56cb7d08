// SPDX-License-Identifier: MIT
#define KAP_NO_VERSION
#include "Small.h"

// Lacks an entry point.
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
