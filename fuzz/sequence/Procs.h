// SPDX-License-Identifier: MIT
#pragma once

#include "Harness.h"

// The registered procedures of property objects.

using Handle = KAP_T_MT::KAPContainerBaseGeneric;
using Objects = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSObjectInterface>;
using Numbers = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSNumberInterface>;
using Strings = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSStringInterface>;
using UnicodeStrings = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSUnicodeStringInterface>;
using BinDatas = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSBinDataInterface>;
using RawPointers = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSRawPointerInterface>;
using Arrays = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSArrayInterface>;
using Dicts = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSDictInterface>;
using Iterators = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSDictIteratorInterface>;
using ObjectStatics = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSObjectStatics>;
