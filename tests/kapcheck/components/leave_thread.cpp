// SPDX-License-Identifier: MIT
#include <chrono>
#include <thread>

#include "Small.h"

// Starts a thread when it is first used, and does not end it.
static bool gHasThread = false;
bool Start() { return StartWell(); }
void Stop() { StopWell(); }
double Answer() noexcept {
  if (gHasThread) return 42;
  gHasThread = true;
  std::thread([] {
    for (volatile bool goesOn = true; goesOn;) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }).detach();
  return 42;
}
