// SPDX-License-Identifier: MIT
#pragma once

#include "NoteInterface.h"
#include "Small.h"

// A small component with a second interface, which is declared to kapcheck. Each source defines the
// first two procedures.
int Length(const char* text) noexcept;
KAPError* Make(KAPContainer** out, KAPStringAtom* name) noexcept;

// Writes as much as there is room for.
inline int Fill(char* buffer, int size) noexcept {
  for (int i = 0; buffer && i < size; ++i) buffer[i] = 'x';
  return size;
}

inline bool StartNoting() {
  if (!StartWell()) return false;
  const auto proc = Proc<KAPBinderInterface, "KAPRegisterProcAddress">();
  for (const auto& entry : NoteInterface::Registration(&Length, &Make, &Fill)) {
    if (!proc || !proc(NoteInterface::kName, entry.fMethodName, entry.fProcName, entry.fProc))
      return false;
  }
  return true;
}

inline void StopNoting() {
  if (!gIsRegistered) return;
  Unregister(NoteInterface::kName);
  StopWell();
}

inline KAPError* MakeWell(KAPContainer** out, KAPStringAtom* name) {
  const auto newContainer = Proc<KAPContainerInterface, "NewContainer">();
  const auto core = Proc<KAPErrorInterface, "GetCoreError">();
  if (out) *out = nullptr;
  if (!core || !newContainer) return nullptr;
  return out && name ? newContainer(out) : core(0);
}
