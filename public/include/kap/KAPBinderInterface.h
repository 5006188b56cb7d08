// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The binder's own procedures. They are the first that a component fetches, with the callback it
// receives from the host. Each method name equals its procedure name, deliberately: these
// procedures have no revisions.
struct KAPBinderInterface
    : TKAPInterface<
          "KAP",
          // Registers `proc` under the three names, replacing a procedure that is already there.
          // The binder copies the names. Nonzero: registered. 0: an argument is null, or the host
          // fails. [any thread]
          TKAPMethod<"KAPRegisterProcAddress", "KAPRegisterProcAddress",
                     int(const char* interfaceName, const char* methodName, const char* procName,
                         void* proc)>,
          // Reports a failure that the component cannot return to its caller. The host copies the
          // message, which is never null. [any thread]
          TKAPMethod<"KAPReportError", "KAPReportError", void(const char* message)>,
          // Removes every procedure of the interface. If there were any, the unregister counter
          // grows by one and callers reload their tables before the next call. [any thread]
          TKAPMethod<"KAPUnregisterInterface", "KAPUnregisterInterface",
                     void(const char* interfaceName)>,
          // The address of the unregister counter, borrowed for the life of the process. The host
          // increments the counter atomically; components only read it. [any thread]
          TKAPMethod<"KAPGetUnregisterCountAddr", "KAPGetUnregisterCountAddr", unsigned long*()>,
          // Nonzero: the host calls components from several threads. [any thread]
          TKAPMethod<"KAPIsMultiThreaded", "KAPIsMultiThreaded", int()>> {};

}  // namespace KAP_T_MT
