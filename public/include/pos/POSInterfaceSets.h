// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"
#include "pos/POSInterfaces.h"
#include "pos/POSStreamerInterfaces.h"
#include "pos/POSValidatorInterfaces.h"

// Every interface of property objects that the library registers, in the order of registration. The
// library registers and unregisters from these lists. A program can visit them to list the
// interfaces:
//
//   POSInterfaceSet::ForEach([]<class Interface>() { std::puts(Interface::kName); });

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Property objects: what all kinds share, then one interface a kind, then what walks dictionaries.
using POSInterfaceSet =
    TKAPInterfaceSet<POSObjectInterface, POSObjectStatics, POSNumberInterface, POSStringInterface,
                     POSUnicodeStringInterface, POSBinDataInterface, POSRawPointerInterface,
                     POSArrayInterface, POSDictInterface, POSDictIteratorInterface>;

// Documents on streams.
using POSStreamerInterfaceSet = TKAPInterfaceSet<POSStreamerInterface>;

// Validators; the interface that all of them have, then the one that makes them.
using POSValidatorInterfaceSet =
    TKAPInterfaceSet<POSValidatorInterface, POSStructValidatorInterface>;

static_assert(
    []<class... Interfaces>(const TKAPInterfaceSet<Interfaces...>*) {
      return POSCoverEveryKind<Interfaces...>();
    }(static_cast<const POSInterfaceSet*>(nullptr)),
    "POSInterfaceSet does not have one interface for each kind of POSType, in order");

}  // namespace KAP_T_MT
