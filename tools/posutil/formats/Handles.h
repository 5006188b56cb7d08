// SPDX-License-Identifier: MIT
#pragma once

#include "base/Failure.h"
#include "kap/KAPContainer.h"
#include "kap/KAPInterfaceClient.h"
#include "pos/POSInterfaces.h"

namespace PosUtil {

// The plain procedures, for documents with many values. The typed wrappers first look up the kind
// and the methods of each object, which takes longer than the call itself.
using Objects = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSObjectInterface>;
using Numbers = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSNumberInterface>;
using Strings = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSStringInterface>;
using UnicodeStrings = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSUnicodeStringInterface>;
using BinDatas = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSBinDataInterface>;
using RawPointers = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSRawPointerInterface>;
using Arrays = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSArrayInterface>;
using Dicts = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSDictInterface>;
using DictIterators = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSDictIteratorInterface>;

// Owns a reference to an object of any kind.
using Handle = KAP_T_MT::KAPContainerBaseGeneric;

// Returns `result`. Throws Failure for null; the library has then reported the reason.
template <class Result>
Result* NotNull(Result* result) {
  if (!result) [[unlikely]]
    throw Failure("the library failed");
  return result;
}
inline Handle Owned(KAPContainer* created) { return {NotNull(created), KAP_T_MT::KAPAdopt()}; }

}  // namespace PosUtil
