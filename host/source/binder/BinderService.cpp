// SPDX-License-Identifier: MIT
#include "base/Current.h"
#include "base/Reports.h"
#include "binder/Registration.h"
#include "kap/KAPBinderInterface.h"

// The procedures of KAPBinderInterface.

namespace KAPHost {

namespace {

int RegisterProcAddress(const char* interfaceName, const char* methodName, const char* procName,
                        void* proc) noexcept {
  Binder* binder = Current<Binder>();
  return binder && binder->RegisterForComponent(interfaceName, methodName, procName, proc);
}

void ReportError(const char* message) noexcept {
  Report(message ? message : "(a report without a message)");
}

void UnregisterInterface(const char* interfaceName) noexcept {
  if (Binder* binder = Current<Binder>()) binder->Unregister(interfaceName);
}

unsigned long* GetUnregisterCountAddr() noexcept { return Binder::UnregisterCountAddr(); }

// Components must expect calls from any thread.
int IsMultiThreaded() noexcept { return 1; }

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPBinderInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPBinderInterface, &RegisterProcAddress, &ReportError,
                &UnregisterInterface, &GetUnregisterCountAddr, &IsMultiThreaded>(binder);
}

}  // namespace KAPHost
