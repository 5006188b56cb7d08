#include "kap/KAPHostInterfaces.h"

namespace {

using Strings = KAP_T_MT::KAPStringInterface;

KAPGetProcAddressProc gGetProc = nullptr;
KAPStringAtom* gAtom = nullptr;

template <KAP_T_MT::TKAPName Method>
auto Fetch() {
  constexpr auto entry = Strings::kEntries[Strings::kSlot<Method>];
  return reinterpret_cast<Strings::Proc<Method>>(
      gGetProc(Strings::kName, entry.fMethodName, entry.fProcName));
}

template <class Proc>
Proc Binder(const char* name) {
  return reinterpret_cast<Proc>(gGetProc("KAP", name, name));
}

int Answer() { return 42; }

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int SmallInitialize(KAPGetProcAddressProc getProc) {
  gGetProc = getProc;
  gAtom = Fetch<"NewStringAtom">()("kept by a component");
  using Register = int (*)(const char*, const char*, const char*, void*);
  return Binder<Register>("KAPRegisterProcAddress")("SmallInterface", "Answer", "SmallAnswerProc",
                                                    reinterpret_cast<void*>(&Answer));
}

__attribute__((visibility("default"))) void SmallTerminate() {
  Binder<void (*)(const char*)>("KAPUnregisterInterface")("SmallInterface");
  Fetch<"DeleteStringAtom">()(gAtom);
}

__attribute__((visibility("default"))) int SmallGetVersion() { return 7; }

}  // extern "C"
