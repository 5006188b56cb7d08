// SPDX-License-Identifier: MIT
#pragma once

#include "commands/changes/Change.h"

namespace PosUtil {

// Applies the operations of a JSON Patch (RFC 6902) to a document. Throws Failure: with
// kExitNegative if the document does not fit an operation, with kExitFailure for a patch that is
// malformed. The document may then be changed in part, so the caller drops it.
void ApplyJsonPatch(KAP_T_MT::CPOSObject& document, Change& patch);

}  // namespace PosUtil
