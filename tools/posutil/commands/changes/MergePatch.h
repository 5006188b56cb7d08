// SPDX-License-Identifier: MIT
#pragma once

#include "commands/changes/Change.h"

namespace PosUtil {

// Merges a patch into a document (RFC 7396): the members of its dictionaries replace those of the
// document, null removes one, anything else replaces the whole value. An empty `document` is null.
void ApplyMergePatch(KAP_T_MT::CPOSObject& document, Change& patch);

}  // namespace PosUtil
