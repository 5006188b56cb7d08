// SPDX-License-Identifier: MIT
#pragma once

#include "NoteInterface.h"
#include "Small.h"

// A small component with a second interface, which is declared to kapcheck. Each source defines the
// two procedures.
int Length(const char* text) noexcept;
KAPError* Make(KAPContainer** out, KAPStringAtom* name) noexcept;

inline bool StartNoting() {
  if (!StartWell()) return false;
  const auto proc = Proc<KAPBinderInterface, "KAPRegisterProcAddress">();
  for (const auto& entry : NoteInterface::Registration(&Length, &Make)) {
    if (!proc(NoteInterface::kName, entry.fMethodName, entry.fProcName, entry.fProc)) return false;
  }
  return true;
}

inline void StopNoting() {
  if (!gIsRegistered) return;
  if (const auto proc = Proc<KAPBinderInterface, "KAPUnregisterInterface">()) {
    proc(NoteInterface::kName);
  }
  StopWell();
}

inline KAPError* MakeWell(KAPContainer** out, KAPStringAtom* name) {
  const auto newContainer = Proc<KAPContainerInterface, "NewContainer">();
  const auto core = Proc<KAPErrorInterface, "GetCoreError">();
  if (out) *out = nullptr;
  if (!core || !newContainer) return nullptr;
  return out && name ? newContainer(out) : core(0);
}
