// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "Small.h"

// Crashes as soon as it is loaded.
[[gnu::constructor]] static void Crash() { std::abort(); }
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
