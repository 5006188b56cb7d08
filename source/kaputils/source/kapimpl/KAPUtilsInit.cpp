// The three functions that the library exports.

#include "kap/KAPClient.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "kaputilsdirimpl/KAPUtilsDirImpl.h"
#include "posimpl/procs/POSDictImpl.h"
#include "posimpl/streamer/POSStreamerImpl.h"
#include "posimpl/validator/POSValidatorImpl.h"

#define KAPUTILS_EXPORT extern "C" [[gnu::visibility("default")]]

// Initialises the library for the host behind the callback: 1 when everything is registered, else
// 0; also 0, changing nothing, when the library is initialised already. After a failure what was
// registered stays so until KAPUtilsTerminate, which the host calls then as well. Called from one
// thread, before anything else of the library.
KAPUTILS_EXPORT int KAPUtilsInitialize(KAPGetProcAddressProc getProcAddress) noexcept;

// Undoes the initialisation; nothing without one. Objects that are still alive stay so, and are
// destroyed without the host being called. Called from the same thread, after everything else of
// the library.
KAPUTILS_EXPORT void KAPUtilsTerminate() noexcept;

// 0x10101, at any time.
KAPUTILS_EXPORT int KAPUtilsGetVersion() noexcept;

namespace {

constinit bool gInitialized = false;

// The host may be gone by the time static objects are destroyed.
void KillGlobals() noexcept { KAP_T_MT::KAPClientKill(); }

// Once for the process, or until the library is unloaded. A static object's destructor does what
// std::atexit would, except that ThreadSanitizer calls the latter when the library is gone.
void InstallKillGlobals() noexcept {
  static const struct AtExit {
    ~AtExit() { KillGlobals(); }
  } gKillGlobalsInstalled;
}

bool CreateAtoms() noexcept {
  try {
    KAPUtilsAtoms::Create();
    return true;
  } catch (...) {  // the result says so: initialisation has no other channel
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
    // Deliberately without the exit hook, unlike a step that merely answers false.
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
  } catch (...) {  // nobody to tell: the host is taking the library down
  }
}

int KAPUtilsGetVersion() noexcept { return 0x10101; }
