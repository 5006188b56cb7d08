// SPDX-License-Identifier: MIT
#include "Small.h"

// Keeps the address of a host procedure for as long as it is initialised.
static KAPStringInterface::Proc<"AddRef"> gAddRef = nullptr;
bool Start() {
  if (!StartWell()) return false;
  gAddRef = Proc<KAPStringInterface, "AddRef">();
  return true;
}
void Stop() {
  if (gIsRegistered && gAddRef) gAddRef(nullptr);
  StopWell();
}
double Answer() noexcept { return 42; }
