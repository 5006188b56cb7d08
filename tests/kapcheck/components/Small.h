// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPHostInterfaces.h"

// What the small components have in common: the entry points, and the procedure "Answer". Each
// source defines Start, Stop and Answer, most of them with the help of StartWell and StopWell, and
// breaks one rule. KAP_COMPONENT is the name of the component.

using namespace KAP_T_MT;

// Takes what the component needs. Returns whether it has it; if not, Stop follows all the same.
bool Start();
// Releases it. Also called out of turn.
void Stop();
// 42.
double Answer() noexcept;

struct AnswerInterface
    : TKAPInterface<"AnswerInterface", TKAPMethod<"Answer", "AnswerProc", double()>> {};

inline KAPGetProcAddressProc gGetProc = nullptr;

// Null when the host lacks it.
template <class Interface, TKAPName Method>
auto Proc() {
  constexpr auto entry = Interface::kEntries[Interface::template kSlot<Method>];
  void* const proc =
      gGetProc ? gGetProc(Interface::kName, entry.fMethodName, entry.fProcName) : nullptr;
  return reinterpret_cast<typename Interface::template Proc<Method>>(proc);
}

inline KAPStringAtom* NewAtom(const char* text) {
  const auto proc = Proc<KAPStringInterface, "NewStringAtom">();
  return proc ? proc(text) : nullptr;
}
inline void DeleteAtom(KAPStringAtom* atom) {
  const auto proc = Proc<KAPStringInterface, "DeleteStringAtom">();
  if (proc) proc(atom);
}

// Registers "Answer" under the name of another interface, too.
inline bool RegisterUnder(const char* name, double (*answer)()) {
  const auto proc = Proc<KAPBinderInterface, "KAPRegisterProcAddress">();
  return proc && proc(name, "Answer", "AnswerProc", reinterpret_cast<void*>(answer)) != 0;
}
inline void Unregister(const char* name) {
  if (const auto proc = Proc<KAPBinderInterface, "KAPUnregisterInterface">()) proc(name);
}

inline bool gIsRegistered = false;
inline KAPStringAtom* gAtom = nullptr;

// Makes an atom and registers "Answer". False when it cannot, or when it already has.
inline bool StartWell() {
  if (gIsRegistered) return false;
  gAtom = NewAtom("kept by a small component");
  gIsRegistered = gAtom && RegisterUnder(AnswerInterface::kName, &Answer);
  if (gIsRegistered) return true;
  DeleteAtom(gAtom);
  gAtom = nullptr;
  return false;
}

inline void StopWell() {
  if (!gIsRegistered) return;
  Unregister(AnswerInterface::kName);
  DeleteAtom(gAtom);
  gAtom = nullptr;
  gIsRegistered = false;
}

#define KAP_JOIN_TWO(a, b) a##b
#define KAP_JOIN(a, b) KAP_JOIN_TWO(a, b)
#define KAP_EXPORT extern "C" [[gnu::visibility("default")]]

KAP_EXPORT int KAP_JOIN(KAP_COMPONENT, Initialize)(KAPGetProcAddressProc getProc) {
  // A second initialisation keeps the host of the first one.
  if (!gIsRegistered) gGetProc = getProc;
  return Start();
}
KAP_EXPORT void KAP_JOIN(KAP_COMPONENT, Terminate)() { Stop(); }
#ifndef KAP_NO_VERSION
KAP_EXPORT int KAP_JOIN(KAP_COMPONENT, GetVersion)() { return 1; }
#endif
