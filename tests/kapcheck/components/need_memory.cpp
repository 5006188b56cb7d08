// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "Small.h"

// Writes to a block without checking that it exists.
bool Start() {
  if (!StartWell()) return false;
  const auto alloc = Proc<KAPMemoryInterface, "Alloc">();
  const auto free = Proc<KAPMemoryInterface, "Free">();
  if (!alloc || !free) return true;
  void* const block = alloc(100);
  if (!block) std::abort();
  free(block);
  return true;
}
void Stop() { StopWell(); }
double Answer() noexcept { return 42; }
