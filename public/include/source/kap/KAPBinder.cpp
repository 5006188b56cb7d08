#include "kap/KAPBinder.h"

#include <algorithm>
#include <iterator>

#include "KAPBinderState.h"
#include "kap/KAPCache.h"
#include "kap/KAPContainer.h"
#include "kap/KAPError.h"
#include "kap/KAPFilter.h"
#include "kap/KAPMemory.h"
#include "kap/KAPProcTable.h"
#include "kap/KAPProgress.h"
#include "kap/KAPSharedBuff.h"
#include "kap/KAPStaticCache.h"
#include "kap/KAPStringAtom.h"
#include "kap/LazyTerminate.h"

namespace KAP_T_MT {

namespace {
constexpr unsigned long kNoUnregisterCount = 0;  // what there is to look at while no host is bound
}

constinit KAPGetProcAddressProc gGetProc = nullptr;
constinit const unsigned long* gKAPUnregisterCount = &kNoUnregisterCount;
constinit bool gFinishedInit = false;

namespace {

int (*gRegisterProc)(const char*, const char*, const char*, void*) = nullptr;
void (*gErrorProc)(const char*) = nullptr;
void (*gUnregisterInterfaceProc)(const char*) = nullptr;
unsigned long* (*gGetUnregisterCountAddrProc)() = nullptr;
int (*gKAPIsMultiThreadedProc)() = nullptr;

// The binder's own procedures have one name for all three.
template <class Proc>
bool FetchBinderProc(Proc& proc, const char* name) {
  proc = reinterpret_cast<Proc>(gGetProc("KAP", name, name));
  return proc != nullptr;
}

bool FetchBinderProcs() {
  const bool fetched[] = {FetchBinderProc(gRegisterProc, "KAPRegisterProcAddress"),
                          FetchBinderProc(gErrorProc, "KAPReportError"),
                          FetchBinderProc(gUnregisterInterfaceProc, "KAPUnregisterInterface"),
                          FetchBinderProc(gGetUnregisterCountAddrProc, "KAPGetUnregisterCountAddr"),
                          FetchBinderProc(gKAPIsMultiThreadedProc, "KAPIsMultiThreaded")};
  return std::all_of(std::begin(fetched), std::end(fetched), [](bool found) { return found; });
}

// What still reaches for the host from now on meets a stand-by procedure, and no table is loaded
// again.
void ForgetHost() noexcept {
  KAPProcTable::ForgetAll();
  CKAPContainer::StandBy();
  CKAPStringAtom::Close();
  CKAPError::StandBy();
  CKAPMemory::StandBy();
  CKAPSharedBuff::Close();
  CKAPCache::StandBy();
  CKAPDataSink::StandBy();
  CKAPProgress::StandBy();
  gRegisterProc = nullptr;
  gErrorProc = nullptr;
  gUnregisterInterfaceProc = nullptr;
  gGetUnregisterCountAddrProc = nullptr;
  gKAPIsMultiThreadedProc = nullptr;
  gKAPUnregisterCount = &kNoUnregisterCount;
  gFinishedInit = false;
  gGetProc = nullptr;
}

}  // namespace

bool KAPClientInit(KAPGetProcAddressProc getProc) {
  if (gGetProc) return true;
  if (!getProc) return false;
  gGetProc = getProc;
  gFinishedInit = false;
  if (!FetchBinderProcs()) return false;
  const unsigned long* unregisterCount = gGetUnregisterCountAddrProc();
  if (!unregisterCount) return false;
  gKAPUnregisterCount = unregisterCount;
  if (!CKAPContainer::Init() || !CKAPError::Init() || !KAPStringClient::TryRefresh()) return false;
  CKAPMemory::Init();
  gFinishedInit = true;
  if (!LazyTerminate::InitializeAll()) return false;
  CKAPStaticCacheBase::LinkToKAP();
  return true;
}

void KAPClientTerminate() {
  if (!gGetProc) return;
  CKAPStaticCacheBase::UnlinkFromKAP();
  LazyTerminate::TerminateAll();
  CKAPError::Close();
  ForgetHost();
}

void KAPClientKill() noexcept {
  CKAPStaticCacheBase::KillAll();
  LazyTerminate::KillAll();
  CKAPError::Kill();
  ForgetHost();
}

bool KAPIsBound() noexcept { return gGetProc != nullptr; }

void* KAPQueryProcAddress(const char* interfaceName, const char* methodName, const char* procName) {
  return gGetProc ? gGetProc(interfaceName, methodName, procName) : nullptr;
}

void* KAPGetProcAddress(const char* interfaceName, const char* methodName, const char* procName) {
  void* proc = KAPQueryProcAddress(interfaceName, methodName, procName);
  if (!proc && gFinishedInit) CKAPError::ThrowError("", "KAP", 0);
  return proc;
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

bool KAPAnswerLoad(KAPLoadOutcome outcome) {
  if (outcome == KAPLoadOutcome::kMissing && gFinishedInit) CKAPError::ThrowError("", "KAP", 0);
  return outcome == KAPLoadOutcome::kLoaded;
}

int KAPLoadProcTable(const _t_KAPFTabEntry* entries, std::size_t count, const char* interfaceName,
                     void** out, int) {
  return KAPAnswerLoad(KAPFetchProcs(entries, count, interfaceName,
                                     [&](std::size_t i, void* proc) { out[i] = proc; }))
             ? 1
             : 0;
}

int KAPLoadMethodTable(const _t_KAPFTabEntry* entries, std::size_t count, KAPContainer* container,
                       int required, void** out) {
  for (std::size_t i = 0; i < count; ++i) {
    const CKAPStringAtom methodName(entries[i].fMethodName);
    const CKAPStringAtom procName(entries[i].fProcName);
    void* method = nullptr;
    KAPCheck(KAPContainerClient::Call<"GetMethod">(&method, container, methodName.Handle(),
                                                   procName.Handle(), required ? 0 : 1));
    out[i] = method;
    if (required && !method) return 0;
  }
  return 1;
}

void KAPThrowMissingInterfaceError() { CKAPError::ThrowError("Missing Interface", "KAP", 0); }

void KAPNoOpFunction() noexcept {}
void KAPAssertNoObjects() noexcept {}

}  // namespace KAP_T_MT
