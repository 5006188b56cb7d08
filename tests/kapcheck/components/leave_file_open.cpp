// SPDX-License-Identifier: MIT
#include <fcntl.h>

#include "Small.h"

// Does not close a file.
bool Start() { return StartWell() && ::open("/dev/null", O_RDONLY) >= 0; }
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
