// SPDX-License-Identifier: MIT
#pragma once

#include "pos/POSValidatorInterfaces.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// Validates a dictionary against the schema of schemas, see MetaSchema.h. Each type name in it must
// be that of an intrinsic type or a key of the dictionary.
bool ValidateSchema(const CPOSObject& schema, KAP_T_MT::POSMessageProc message);

}  // namespace NPOSValidatorImpl
