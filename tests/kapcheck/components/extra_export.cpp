// SPDX-License-Identifier: MIT
#include "Small.h"

// Exports a function of its own.
KAP_EXPORT void HelperOfTheComponent() {}
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
