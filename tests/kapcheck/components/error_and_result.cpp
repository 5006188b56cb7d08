// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <cstring>

#include "Noting.h"

// Returns an error together with a container.
bool Start() { return StartNoting(); }
void Stop() { StopNoting(); }
double Answer() noexcept { return 42; }
int Length(const char* text) noexcept { return text ? static_cast<int>(std::strlen(text)) : 0; }
KAPError* Make(KAPContainer** out, KAPStringAtom* name) noexcept {
  KAPError* const error = gIsRegistered ? MakeWell(out, name) : nullptr;
  if (!error || !out) return error;
  Proc<KAPContainerInterface, "NewContainer">()(out);
  return error;
}
