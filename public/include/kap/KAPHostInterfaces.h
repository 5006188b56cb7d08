// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPBinderInterface.h"
#include "kap/KAPCacheInterface.h"
#include "kap/KAPContainerInterface.h"
#include "kap/KAPErrorInterface.h"
#include "kap/KAPFilterInterface.h"
#include "kap/KAPInterface.h"
#include "kap/KAPMemoryInterface.h"
#include "kap/KAPProgressInterface.h"
#include "kap/KAPSharedBuffInterface.h"
#include "kap/KAPStreamInterfaces.h"
#include "kap/KAPStringInterface.h"

// The interfaces that a host provides, one header each, and the list of them. To write a host,
// implement these; to use one, include the header of the interface or, better, its wrapper classes.
//
// Every procedure follows these conventions:
//
//   1. Plain C calls; nothing throws. `bool` is one byte, `int` 32 bits, `long` and `size_t` 64.
//   2. Result places come first, then the object acted on, then the other arguments.
//   3. A `KAPError*` result is null on success, else a new reference for the caller. After an error
//      the result places are null or 0. A null result place is an error, and nothing is done.
//   4. Handles and atoms passed in are borrowed for the call. A returned handle or atom carries one
//      new reference for the caller, unless its contract says "borrowed".
//   5. A `const char*` is a zero-terminated string of bytes. A returned string lives as long as the
//      object it belongs to.
//   6. Each contract ends with a thread tag; KAPInterface.h explains the tags.
//   7. Handles are opaque, except for two words of a container record (KAPContainerInterface.h).

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Every interface that a host registers under the interface's own name. The interfaces of streams
// and data stores (KAPStreamInterfaces.h) are not among them: their methods are looked up through a
// container.
using KAPHostInterfaceSet =
    TKAPInterfaceSet<KAPBinderInterface, KAPStringInterface, KAPErrorInterface, KAPMemoryInterface,
                     KAPContainerInterface, KAPStreamFactoryInterface, KAPSharedBuffInterface,
                     KAPCacheInterface, KAPFilterInterface, KAPProgressInterface>;

}  // namespace KAP_T_MT
