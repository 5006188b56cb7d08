// SPDX-License-Identifier: MIT
#pragma once

#include "files/Source.h"
#include "pos/POSObject.h"

namespace PosUtil {

// Reads a document in text notation. Throws SyntaxError. The caller checks the reports of the
// library.
KAP_T_MT::CPOSObject ReadNotation(const Source& source);

}  // namespace PosUtil
