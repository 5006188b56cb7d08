// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

// What careless_component registers.
struct CarelessInterface
    : KAP_T_MT::TKAPInterface<
          "CarelessInterface",
          // Misuses the host in the way that is named.
          KAP_T_MT::TKAPMethod<"Misuse", "CarelessMisuseProc", void(const char* how)>,
          KAP_T_MT::TKAPMethod<"LeaveUnset", "CarelessLeaveUnsetProc", KAPError*(double* out)>,
          KAP_T_MT::TKAPMethod<"ReturnBoth", "CarelessReturnBothProc", KAPError*(double* out)>,
          KAP_T_MT::TKAPMethod<"ReturnErrorOnly", "CarelessReturnErrorOnlyProc",
                               KAPError*(double* out)>,
          KAP_T_MT::TKAPMethod<"ReturnErrorAndZero", "CarelessReturnErrorAndZeroProc",
                               KAPError*(double* out)>,
          KAP_T_MT::TKAPMethod<"Throw", "CarelessThrowProc", void()>,
          KAP_T_MT::TKAPMethod<"ReturnDead", "CarelessReturnDeadProc", KAPStringAtom*()>,
          KAP_T_MT::TKAPMethod<"ReturnOther", "CarelessReturnOtherProc", KAPError*()>,
          KAP_T_MT::TKAPMethod<"PlaceOther", "CarelessPlaceOtherProc",
                               KAPError*(KAPStringAtom** out)>,
          KAP_T_MT::TKAPMethod<"ReturnByte", "CarelessReturnByteProc",
                               KAPError*(unsigned char* out)>> {};
