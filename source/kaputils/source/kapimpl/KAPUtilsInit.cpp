// SPDX-License-Identifier: MIT

// The three functions that the library exports.

#include "KAPUtilsVersion.h"
#include "kap/KAPClient.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "kaputilsdirimpl/KAPUtilsDirImpl.h"
#include "posimpl/procs/POSDictImpl.h"
#include "posimpl/streamer/POSStreamerImpl.h"
#include "posimpl/validator/POSValidatorImpl.h"

#define KAPUTILS_EXPORT extern "C" [[gnu::visibility("default")]]

// Binds the library to the host that `getProcAddress` belongs to, and registers all interfaces. 1
// on success, else 0. Deliberate: 0 as well, and nothing changes, when the library is initialised
// already. After a failure some interfaces may be registered; the host calls KAPUtilsTerminate as
// after a success. The host calls both from one thread, while no other thread uses the library.
KAPUTILS_EXPORT int KAPUtilsInitialize(KAPGetProcAddressProc getProcAddress) noexcept;

// Undoes KAPUtilsInitialize; a no-op without one. Objects that are still alive remain valid, and
// are destroyed without a host call.
KAPUTILS_EXPORT void KAPUtilsTerminate() noexcept;

// KAPUTILS_VERSION of this build. May be called at any time.
KAPUTILS_EXPORT int KAPUtilsGetVersion() noexcept;

namespace {

constinit bool gInitialized = false;

// Runs at process exit: the host may be gone by then.
void KillGlobals() noexcept { KAP_T_MT::KAPClientKill(); }

// Installs the exit hook once, for as long as the library is loaded. A static object's destructor
// does what std::atexit would, but also works under ThreadSanitizer, which calls procedures of
// atexit after the library is unloaded.
void InstallKillGlobals() noexcept {
  static const struct AtExit {
    ~AtExit() { KillGlobals(); }
  } gKillGlobalsInstalled;
}

bool CreateAtoms() noexcept {
  try {
    KAPUtilsAtoms::Create();
    return true;
  } catch (...) {  // initialisation has no channel but its result
    return false;
  }
}

bool RegisterAll() {
  return NPOSObjectImpl::RegisterPOSDictImpl() && NPOSStreamerImpl::RegisterPOSStreamerImpl() &&
         NPOSValidatorImpl::RegisterPOSValidatorImpl() &&
         NKAPUtilsDirImpl::RegisterKAPUtilsDirImpl();
}

void UnregisterAll() {
  NKAPUtilsDirImpl::UnregisterKAPUtilsDirImpl();
  NPOSValidatorImpl::UnregisterPOSValidatorImpl();
  NPOSStreamerImpl::UnregisterPOSStreamerImpl();
  NPOSObjectImpl::UnregisterPOSDictImpl();
}

}  // namespace

int KAPUtilsInitialize(KAPGetProcAddressProc getProcAddress) noexcept {
  if (gInitialized) return 0;
  gInitialized = true;
  try {
    const bool complete = KAP_T_MT::KAPClientInit(getProcAddress) && CreateAtoms() && RegisterAll();
    InstallKillGlobals();
    return complete ? 1 : 0;
  } catch (...) {
    // Deliberate: no exit hook after an exception, unlike after a step that returns false.
    return 0;
  }
}

void KAPUtilsTerminate() noexcept {
  if (!gInitialized) return;
  gInitialized = false;
  try {
    UnregisterAll();
    KAPUtilsAtoms::Destroy();
    KAP_T_MT::KAPClientTerminate();
  } catch (...) {  // termination has no result, and the host is unloading the library
  }
}

int KAPUtilsGetVersion() noexcept { return KAPUTILS_VERSION; }
