// SPDX-License-Identifier: MIT
#include "kap/KAPClient.h"

#include <string>

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "kap/KAPContainer.h"
#include "kap/KAPError.h"
#include "kap/KAPMemory.h"
#include "kap/KAPProcTable.h"
#include "kap/KAPStaticCache.h"
#include "kap/KAPStringAtom.h"
#include "kap/LazyTerminate.h"
#include "source/kap/KAPBinding.h"

namespace KAP_T_MT {

namespace {

// Afterwards a released handle makes no host call, and no table is loaded again.
void ForgetHost() noexcept {
  KAPProcTable::ForgetAll();
  KAPForgetBinder();
}

}  // namespace

bool KAPClientInit(KAPGetProcAddressProc getProc) {
  if (KAPIsBound()) return true;
  if (!getProc || !KAPFetchBinder(getProc)) return false;
  if (!CKAPContainer::Init() || !CKAPError::Init() || !KAPStringClient::TryRefresh()) return false;
  CKAPMemory::Init();
  gFinishedInit = true;
  if (!LazyTerminate::InitializeAll()) return false;
  CKAPStaticCacheBase::LinkToKAP();
  return true;
}

void KAPClientTerminate() {
  if (!KAPIsBound()) return;
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

KAPClient::KAPClient(KAPGetProcAddressProc getProc) {
  if (KAPIsBound()) throw KAPBindingError("the client runtime is already bound to a host");
  std::string reason = "the host lacks one of the interfaces that the client runtime needs";
  try {
    if (KAPClientInit(getProc)) return;
  } catch (const std::exception& failure) {
    const char* text = failure.what();
    if (text && *text != '\0') reason = text;
  }
  Unbind();
  throw KAPBindingError("cannot bind the client runtime: " + reason);
}

KAPClient::~KAPClient() { Unbind(); }

// Reports what a LazyTerminate member throws, while there is a host to report it to. The binding
// must end here, so what is left is then forgotten instead of released.
void KAPClient::Unbind() noexcept {
  KAPReportingError([] { KAPClientTerminate(); });
  if (KAPIsBound()) KAPClientKill();
}

}  // namespace KAP_T_MT
