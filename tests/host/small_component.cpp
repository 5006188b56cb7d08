#include "kap/KAPHostInterfaces.h"

// A component that registers one procedure and keeps one atom.

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

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int SmallInitialize(KAPGetProcAddressProc getProc) {
  gGetProc = getProc;
  gAtom = Fetch<Strings, "NewStringAtom">()("kept by a component");
  return Fetch<Binder, "KAPRegisterProcAddress">()("SmallInterface", "Answer", "SmallAnswerProc",
                                                   reinterpret_cast<void*>(&Answer));
}

__attribute__((visibility("default"))) void SmallTerminate() {
  Fetch<Binder, "KAPUnregisterInterface">()("SmallInterface");
  Fetch<Strings, "DeleteStringAtom">()(gAtom);
}

__attribute__((visibility("default"))) int SmallGetVersion() { return 7; }

}  // extern "C"
