#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The binder's own procedures. A component fetches them first, with the callback that the host
// hands to it. Method and procedure names are the same, deliberately.
struct KAPBinderInterface
    : TKAPInterface<
          "KAP",
          // Registers `proc` under the three names; a procedure already there is replaced. All
          // texts are copied. Nonzero: registered. 0: a name or the procedure is null, or the host
          // refuses. [any thread]
          TKAPMethod<"KAPRegisterProcAddress", "KAPRegisterProcAddress",
                     int(const char* interfaceName, const char* methodName, const char* procName,
                         void* proc)>,
          // Takes the message of a failure that the component cannot return to its caller. The text
          // is copied; components never pass null. [any thread]
          TKAPMethod<"KAPReportError", "KAPReportError", void(const char* message)>,
          // Removes every procedure of the interface. When there were any, the unregister counter
          // grows by one, and callers look up their tables again before the next call. [any thread]
          TKAPMethod<"KAPUnregisterInterface", "KAPUnregisterInterface",
                     void(const char* interfaceName)>,
          // The address of the unregister counter, borrowed for as long as the process lives. The
          // host raises the counter atomically; components only read it. [any thread]
          TKAPMethod<"KAPGetUnregisterCountAddr", "KAPGetUnregisterCountAddr", unsigned long*()>,
          // Nonzero when the host calls components from several threads. [any thread]
          TKAPMethod<"KAPIsMultiThreaded", "KAPIsMultiThreaded", int()>> {};

}  // namespace KAP_T_MT
