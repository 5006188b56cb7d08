// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <cstring>

#include "Noting.h"

// Takes one reference more than it returns, to some containers.
bool Start() { return StartNoting(); }
void Stop() { StopNoting(); }
double Answer() noexcept { return 42; }
int Length(const char* text) noexcept { return text ? static_cast<int>(std::strlen(text)) : 0; }
KAPError* Make(KAPContainer** out, KAPStringAtom* name) noexcept {
  KAPError* const error = gIsRegistered ? MakeWell(out, name) : nullptr;
  if (gIsRegistered && out && *out) Proc<KAPContainerInterface, "AddRef">()(*out);
  return error;
}
