// SPDX-License-Identifier: MIT
#include "kap/KAPBinder.h"

#include "source/kap/KAPBinding.h"

namespace KAP_T_MT {

namespace {

// The counter to compare with while no host is bound.
constexpr unsigned long kNoUnregisterCount = 0;

template <TKAPName Method>
using BinderProc = KAPBinderInterface::Proc<Method>;

constinit BinderProc<"KAPRegisterProcAddress"> gRegisterProc = nullptr;
constinit BinderProc<"KAPReportError"> gErrorProc = nullptr;
constinit BinderProc<"KAPUnregisterInterface"> gUnregisterInterfaceProc = nullptr;
constinit BinderProc<"KAPGetUnregisterCountAddr"> gGetUnregisterCountAddrProc = nullptr;
constinit BinderProc<"KAPIsMultiThreaded"> gKAPIsMultiThreadedProc = nullptr;

template <TKAPName Method>
bool Fetch(BinderProc<Method>& proc) {
  constexpr _t_KAPFTabEntry entry = KAPBinderInterface::kEntries[KAPBinderInterface::kSlot<Method>];
  proc = reinterpret_cast<BinderProc<Method>>(
      gGetProc(KAPBinderInterface::kName, entry.fMethodName, entry.fProcName));
  return proc != nullptr;
}

// Fetches all procedures even if one is missing: after a failed binding "KAPReportError" may still
// be there to report it.
bool FetchProcs() {
  int found = 0;
  found += Fetch<"KAPRegisterProcAddress">(gRegisterProc);
  found += Fetch<"KAPReportError">(gErrorProc);
  found += Fetch<"KAPUnregisterInterface">(gUnregisterInterfaceProc);
  found += Fetch<"KAPGetUnregisterCountAddr">(gGetUnregisterCountAddrProc);
  found += Fetch<"KAPIsMultiThreaded">(gKAPIsMultiThreadedProc);
  return found == KAPBinderInterface::kCount;
}

}  // namespace

constinit KAPGetProcAddressProc gGetProc = nullptr;
constinit const unsigned long* gKAPUnregisterCount = &kNoUnregisterCount;
constinit bool gFinishedInit = false;

bool KAPFetchBinder(KAPGetProcAddressProc getProc) {
  gGetProc = getProc;
  gFinishedInit = false;
  if (!FetchProcs()) return false;
  const unsigned long* unregisterCount = gGetUnregisterCountAddrProc();
  if (!unregisterCount) return false;
  gKAPUnregisterCount = unregisterCount;
  return true;
}

void KAPForgetBinder() noexcept {
  gRegisterProc = nullptr;
  gErrorProc = nullptr;
  gUnregisterInterfaceProc = nullptr;
  gGetUnregisterCountAddrProc = nullptr;
  gKAPIsMultiThreadedProc = nullptr;
  gKAPUnregisterCount = &kNoUnregisterCount;
  gFinishedInit = false;
  gGetProc = nullptr;
}

bool KAPIsBound() noexcept { return gGetProc != nullptr; }

void* KAPQueryProcAddress(const char* interfaceName, const char* methodName, const char* procName) {
  return gGetProc ? gGetProc(interfaceName, methodName, procName) : nullptr;
}

int KAPRegisterProcAddress(const char* interfaceName, const char* methodName, const char* procName,
                           void* proc) {
  return gRegisterProc ? gRegisterProc(interfaceName, methodName, procName, proc) : 0;
}

int KAPRegisterProcTable(const _t_KAPFTabRegEntry* entries, std::size_t count,
                         const char* interfaceName) {
  for (std::size_t i = 0; i < count; ++i) {
    const _t_KAPFTabRegEntry& entry = entries[i];
    if (!KAPRegisterProcAddress(interfaceName, entry.fMethodName, entry.fProcName, entry.fProc)) {
      return 0;
    }
  }
  return 1;
}

void KAPUnregisterInterface(const char* interfaceName) {
  if (gUnregisterInterfaceProc) gUnregisterInterfaceProc(interfaceName);
}

void KAPReportError(const char* message) noexcept {
  if (gErrorProc) gErrorProc(message ? message : "unknown KAP error");
}

int KAPIsMultiThreaded() { return gKAPIsMultiThreadedProc ? gKAPIsMultiThreadedProc() : 0; }

void KAPNoOpFunction() noexcept {}
void KAPAssertNoObjects() noexcept {}

}  // namespace KAP_T_MT
