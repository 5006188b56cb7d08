#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"
#include "kap/KAPTypes.h"

// The client side of the binder: binding and unbinding the runtime, looking procedures up,
// registering one's own.
//
// A component calls KAPClientInit once with the callback that its host hands to it,
// KAPClientTerminate when it is done, and KAPClientKill in a process-exit hook. These three run on
// the host's one controlling thread, while no other thread uses the runtime; everything else may be
// called from any thread.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Binds the runtime. True when it is bound, also when it was so before: a second call fetches
// nothing, whatever it is given. False when the callback is null, when the binder lacks one of its
// own procedures or a core table cannot be had; CKAPError "Missing Interface" when the container or
// the memory interface is not there. Last, when all else is bound, the host is told of the static
// caches, if there are any: for want of its cache interface that raises a CKAPError with an empty
// message. After a failure the callback stays stored, deliberately, so that KAPClientTerminate is
// the way back.
bool KAPClientInit(KAPGetProcAddressProc getProc);

// Gives back what the runtime holds of the host and unbinds it; nothing when it is not bound. What
// is released later (objects that outlive the binding) no longer reaches the host.
void KAPClientTerminate();

// Unbinding at process exit, when the host may be gone: forgets everything, calls nothing in the
// host, and sees to it that whatever static objects release afterwards calls nothing either.
void KAPClientKill() noexcept;

// Whether the host can be called: bound and not killed.
bool KAPIsBound() noexcept;

// The procedure registered under the three names; null when there is none or the runtime is not
// bound.
void* KAPQueryProcAddress(const char* interfaceName, const char* methodName, const char* procName);

// The same, but once the runtime is bound a missing procedure raises a CKAPError with an empty
// message, component "KAP".
void* KAPGetProcAddress(const char* interfaceName, const char* methodName, const char* procName);

// Registers one procedure; nonzero on success, 0 also when the runtime is not bound.
int KAPRegisterProcAddress(const char* interfaceName, const char* methodName, const char* procName,
                           void* proc);

// Registers `entries` in order up to the first refusal: 1 when all were accepted (also none at
// all), else 0. What was accepted stays registered.
int KAPRegisterProcTable(const _t_KAPFTabRegEntry* entries, std::size_t count,
                         const char* interfaceName);

// Withdraws everything registered under the name.
void KAPUnregisterInterface(const char* interfaceName);

// Hands a message to the host's error channel; null counts as "unknown KAP error". Dropped when
// there is no channel.
void KAPReportError(const char* message) noexcept;

// What the host answers. The runtime itself never asks: it always locks.
int KAPIsMultiThreaded();

// Fills `out` with the procedures of a host-global interface, from the last entry to the first. 1
// when all are there. A missing one raises a CKAPError with an empty message once the runtime is
// bound; before that its slot becomes null and the result is 0. Not bound at all: the last slot
// becomes null and the result is 0. The last argument is ignored.
int KAPLoadProcTable(const _t_KAPFTabEntry* entries, std::size_t count, const char* interfaceName,
                     void** out, int ignored);

// Fills `out` with the methods that `container` offers. With `required` nonzero the first missing
// one ends the load with 0, else its slot becomes null. 1 otherwise. A refused atom raises the
// memory error, an error of the host is raised.
int KAPLoadMethodTable(const _t_KAPFTabEntry* entries, std::size_t count, KAPContainer* container,
                       int required, void** out);

// CKAPError "Missing Interface", component "KAP", code 0.
[[noreturn]] void KAPThrowMissingInterfaceError();

// Deliberate no-ops: the stand-by procedure after the process-exit hook, and a check that hosts may
// ask for.
void KAPNoOpFunction() noexcept;
void KAPAssertNoObjects() noexcept;

}  // namespace KAP_T_MT
