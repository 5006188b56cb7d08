// SPDX-License-Identifier: MIT
#include "kap/KAPHostInterfaces.h"

// A component that registers three procedures and keeps one atom.

namespace {

using Binder = KAP_T_MT::KAPBinderInterface;
using Strings = KAP_T_MT::KAPStringInterface;

KAPGetProcAddressProc gGetProc = nullptr;
KAPStringAtom* gAtom = nullptr;

template <class Interface, KAP_T_MT::TKAPName Method>
auto Fetch() {
  constexpr auto entry = Interface::kEntries[Interface::template kSlot<Method>];
  return reinterpret_cast<typename Interface::template Proc<Method>>(
      gGetProc(Interface::kName, entry.fMethodName, entry.fProcName));
}

int Answer() { return 42; }
void Purge() { Fetch<Binder, "KAPReportError">()("purged"); }
void Delete(void* count) { ++*static_cast<int*>(count); }

template <class Proc>
int Register(const char* method, const char* name, Proc* proc) {
  return Fetch<Binder, "KAPRegisterProcAddress">()("SmallInterface", method, name,
                                                   reinterpret_cast<void*>(proc));
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int SmallInitialize(KAPGetProcAddressProc getProc) {
  gGetProc = getProc;
  gAtom = Fetch<Strings, "NewStringAtom">()("kept by a component");
  return Register("Purge", "SmallPurgeProc", &Purge) &&
         Register("Delete", "SmallDeleteProc", &Delete) &&
         Register("Answer", "SmallAnswerProc", &Answer);
}

__attribute__((visibility("default"))) void SmallTerminate() {
  Fetch<Binder, "KAPUnregisterInterface">()("SmallInterface");
  Fetch<Strings, "DeleteStringAtom">()(gAtom);
}

__attribute__((visibility("default"))) int SmallGetVersion() { return 7; }

}  // extern "C"
