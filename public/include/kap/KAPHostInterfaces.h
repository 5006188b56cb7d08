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

// The interfaces of a host, one header each, and the list of them.
//
// Conventions of every procedure:
//
//   1. Plain C calls; nothing throws. `bool` is one byte, `int` has 32 bits, `long` and `size_t` 64.
//   2. Result places come first, then the object acted on, then the rest.
//   3. A `KAPError*` result is null on success, else a new reference for the caller. After an error
//      the result places are null or 0. A null result place is an error, and nothing is done.
//   4. Handles and atoms passed in are borrowed for the call. A returned handle or atom carries one
//      new reference for the caller, unless its contract says "borrowed".
//   5. Texts are zero-terminated bytes. A returned text lives as long as the object it belongs to.
//   6. A thread tag ends each contract; KAPInterface.h explains the tags.
//   7. Handles are opaque, the two words of a container record excepted (KAPContainerInterface.h).

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Every interface that a host registers under its own name. The methods of streams and data stores
// (KAPStreamInterfaces.h) are looked up through containers instead and are not in it.
using KAPHostInterfaceSet =
    TKAPInterfaceSet<KAPBinderInterface, KAPStringInterface, KAPErrorInterface, KAPMemoryInterface,
                     KAPContainerInterface, KAPStreamFactoryInterface, KAPSharedBuffInterface,
                     KAPCacheInterface, KAPFilterInterface, KAPProgressInterface>;

}  // namespace KAP_T_MT
