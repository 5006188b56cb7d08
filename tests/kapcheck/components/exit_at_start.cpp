// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "Small.h"

// Ends the process, with the status of a success.
bool Start() { ::_exit(0); }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
