// SPDX-License-Identifier: MIT
#pragma once

// Property objects for clients: values that components exchange through the binder. Begin with
// pos/POSDictClient.h (dictionaries) and pos/POSObject.h (what all kinds share); the plain
// procedures are in pos/POSInterfaces.h.

#include "kap/KAPClient.h"
#include "pos/POSArray.h"
#include "pos/POSBinData.h"
#include "pos/POSDictClient.h"
#include "pos/POSDictIterator.h"
#include "pos/POSException.h"
#include "pos/POSInterfaceSets.h"
#include "pos/POSInterfaces.h"
#include "pos/POSKind.h"
#include "pos/POSKinds.h"
#include "pos/POSNumber.h"
#include "pos/POSObject.h"
#include "pos/POSRawPointer.h"
#include "pos/POSString.h"
#include "pos/POSUnicodeString.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

static_assert(POSCoverEveryKind<CPOSNumber, CPOSString, CPOSUnicodeString, CPOSBinData,
                                CPOSRawPointer, CPOSArray, CPOSDict>(),
              "a kind of POSType has no wrapper");

}  // namespace KAP_T_MT
