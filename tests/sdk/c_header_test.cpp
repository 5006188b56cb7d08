// SPDX-License-Identifier: MIT
// KAPUtilsC.h says the same as the declarations: checked by the compiler, method by method.

#include <iterator>
#include <type_traits>

#include "KAPUtilsC.h"
#include "Numbers.h"
#include "dir/KAPUtilsDirInterfaces.h"
#include "kap/KAPError.h"
#include "kap/KAPHostInterfaces.h"
#include "pos/POSInterfaceSets.h"
#include "pos/POSKinds.h"

#define KAP_SAME_PROC(method, procedure)                                                    \
  static_assert(std::is_same_v<decltype(Procs::method), Declared::Proc<#method>>, #method); \
  static_assert(offsetof(Procs, method) == Declared::kSlot<#method> * sizeof(void*));       \
  static_assert(std::string_view(procedure) ==                                              \
                Declared::kEntries[Declared::kSlot<#method>].fProcName);
#define KAP_SAME_TABLE(Interface)                                         \
  namespace Check##Interface {                                            \
    using Procs = Interface##Procs;                                       \
    using Declared = KAP_T_MT::Interface;                                 \
    static_assert(std::string_view(Interface##_NAME) == Declared::kName); \
    static_assert(sizeof(Procs) == Declared::kCount * sizeof(void*));     \
    Interface##_METHODS(KAP_SAME_PROC)                                    \
  }
KAPUTILS_INTERFACES(KAP_SAME_TABLE)

// Every interface of the sets is in the C header. The other interfaces are methods of containers.
#define KAP_COUNT(Interface) +1
static_assert(KAPUTILS_INTERFACES(KAP_COUNT) == KAP_T_MT::KAPHostInterfaceSet::kCount +
                                                    KAP_T_MT::POSInterfaceSet::kCount +
                                                    KAP_T_MT::POSStreamerInterfaceSet::kCount +
                                                    KAP_T_MT::POSValidatorInterfaceSet::kCount +
                                                    KAP_T_MT::KAPUtilsDirInterfaceSet::kCount +
                                                    3 /* streams */ + 3 /* data stores */);

// In C++ the enumerations are those of the C++ headers; c_header_test.c checks those of C.
#define KAP_SAME_NUMBER(name, number) \
  static_assert(name == number && +name == +KAP_T_MT::name, #name);
KAP_PUBLISHED_NUMBERS(KAP_SAME_NUMBER)
static_assert(KAP_T_MT::kUnknownErrorID == 0 && KAP_T_MT::kMemErrorID == 1);
static_assert(KAP_T_MT::kPOSTypes[0] == kPOSNumber &&
              std::size(KAP_T_MT::kPOSTypes) == kPOSDict);  // no kind without a published number
