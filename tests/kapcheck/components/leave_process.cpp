// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "Small.h"

// Starts a process in a session of its own, as a server, and does not end it.
bool Start() {
  if (!StartWell()) return false;
  if (::fork() != 0) return true;
  ::setsid();
  for (;;) ::pause();
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
