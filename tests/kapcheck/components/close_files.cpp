// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "Small.h"

// Closes all descriptors that it finds, as a server does.
bool Start() {
  for (int descriptor = 3; descriptor < 64; ++descriptor) ::close(descriptor);
  return StartWell();
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
