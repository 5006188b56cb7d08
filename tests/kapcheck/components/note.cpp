// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <cstring>

#include "Noting.h"

// Breaks no rule.
bool Start() { return StartNoting(); }
void Stop() { StopNoting(); }
double Answer() noexcept { return 42; }
int Length(const char* text) noexcept { return text ? static_cast<int>(std::strlen(text)) : 0; }
KAPError* Make(KAPContainer** out, KAPStringAtom* name) noexcept {
  return gIsRegistered ? MakeWell(out, name) : nullptr;
}
