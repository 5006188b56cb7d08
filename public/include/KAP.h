// SPDX-License-Identifier: MIT
#pragma once

// The client runtime of the binder: everything a component needs to bind itself to a host, to use
// the host's services and to register services of its own. This header includes all of it. Start
// reading with kap/KAPClient.h (binding), kap/KAPInterface.h (declaring an interface) and
// kap/KAPBoundary.h (what a registered procedure looks like). A component in outline:
//
//   extern "C" [[gnu::visibility("default")]] int TotalsInitialize(KAPGetProcAddressProc getProc) {
//     return KAP_T_MT::KAPReportingError([=] {
//       return KAP_T_MT::KAPClientInit(getProc) &&
//              KAP_T_MT::KAPRegisterInterface<TotalsInterface>(&TotalsSumProc);
//     });
//   }
//
//   extern "C" [[gnu::visibility("default")]] void TotalsTerminate() {
//     KAP_T_MT::KAPUnregisterInterface(TotalsInterface::kName);
//     KAP_T_MT::KAPClientTerminate();
//   }
//
// The runtime belongs to the one component that contains it: its sources are compiled into each
// component, and each component has its own tables, shared errors and lists.
//
// Compile a component as C++20 with exceptions, type information, -fvisibility=hidden and, by g++,
// -fno-gnu-unique; the CMake target kapclient adds them. Every header hides the namespace as well,
// so including the headers is quiet without the options, but that alone is not enough: clang still
// exports the functions that the sources define, and a component's own class that derives from a
// class of the runtime is more visible than its base, which g++ warns about. An exported symbol of
// one component can replace the same symbol of another. It can keep dlclose from unloading the
// component, as can the unique symbols that g++ makes of the statics of inline functions.
//
// A default constructor makes an empty reference, and `New()` makes a new object. Three default
// constructors ask the host for an object instead: those of CKAPCacheID, CKAPContainerHolder and
// CKAPPositionableStream. They are deprecated in favour of New(). Other streams, data stores and
// validators have no default constructor, because their references are never empty; in a class,
// hold a std::optional of one. Deprecated forms like these warn when KAP_WARN_DEPRECATED is defined
// before the first header. kap/KAPAdopt.h explains how a class takes a handle.

#include "kap/KAPAdopt.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "kap/KAPCache.h"
#include "kap/KAPCacheInterface.h"
#include "kap/KAPClient.h"
#include "kap/KAPClientBase.h"
#include "kap/KAPClientFilter.h"
#include "kap/KAPClientProcs.h"
#include "kap/KAPClientStream.h"
#include "kap/KAPContainer.h"
#include "kap/KAPDataBlock.h"
#include "kap/KAPDataStore.h"
#include "kap/KAPError.h"
#include "kap/KAPFilter.h"
#include "kap/KAPFilterInterface.h"
#include "kap/KAPHostInterfaces.h"
#include "kap/KAPInterface.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPMemory.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPProcTable.h"
#include "kap/KAPProgress.h"
#include "kap/KAPProgressInterface.h"
#include "kap/KAPReference.h"
#include "kap/KAPSharedBuff.h"
#include "kap/KAPSharedBuffInterface.h"
#include "kap/KAPStaticCache.h"
#include "kap/KAPStream.h"
#include "kap/KAPStreamFactory.h"
#include "kap/KAPStreamInterfaces.h"
#include "kap/KAPStringAtom.h"
#include "kap/KAPTypes.h"
#include "kap/LazyTerminate.h"
#include "kap/TOQException.h"
#include "kap/TOQWaitMutex.h"
