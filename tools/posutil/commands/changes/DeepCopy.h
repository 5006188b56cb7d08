// SPDX-License-Identifier: MIT
#pragma once

#include "pos/POSObject.h"

namespace PosUtil {

// A copy of a value, which shares its scalars; empty for an empty object. The library's own copy
// fails for a value that is nested very deep.
KAP_T_MT::CPOSObject DeepCopy(const KAP_T_MT::CPOSObject& value);

}  // namespace PosUtil
