// SPDX-License-Identifier: MIT
#include <pthread.h>
#include <unistd.h>

#include "Small.h"

// Starts a thread that it does not end. The thread runs a function of the C library alone, so that
// unloading this one does not end in a crash.
bool Start() {
  pthread_t thread;
  const auto run = reinterpret_cast<void* (*)(void*)>(reinterpret_cast<void*>(&::pause));
  return StartWell() && pthread_create(&thread, nullptr, run, nullptr) == 0;
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
