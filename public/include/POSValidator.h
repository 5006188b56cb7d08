// SPDX-License-Identifier: MIT
#pragma once

// Checking property objects against the named types of a schema. Begin with
// pos/POSValidatorClient.h; the plain procedures are in pos/POSValidatorInterfaces.h.

#include "POSDict.h"
#include "pos/POSValidatorClient.h"
#include "pos/POSValidatorInterfaces.h"
