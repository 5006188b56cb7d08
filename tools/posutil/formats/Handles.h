#pragma once

#include "kap/KAPContainer.h"
#include "kap/KAPInterfaceClient.h"
#include "pos/POSInterfaces.h"
#include "program/Failure.h"

namespace PosUtil {

// The plain procedures, for documents of many values: the typed wrappers ask each object for its kind and its methods
// first, which takes longer than what is then asked of it.
using Numbers = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSNumberInterface>;
using Strings = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSStringInterface>;
using UnicodeStrings = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSUnicodeStringInterface>;
using BinDatas = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSBinDataInterface>;
using RawPointers = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSRawPointerInterface>;
using Arrays = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSArrayInterface>;
using Dicts = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSDictInterface>;
using DictIterators = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::POSDictIteratorInterface>;

// Owns one reference to an object of any kind.
using Handle = KAP_T_MT::KAPContainerBaseGeneric;

// What a procedure returned. For null a Failure; the library has then reported why.
template <class Result>
Result* NotNull(Result* result) {
  if (!result) [[unlikely]]
    throw Failure("the library failed");
  return result;
}
inline Handle Owned(KAPContainer* created) { return {NotNull(created), KAP_T_MT::KAPAdopt()}; }

}  // namespace PosUtil
