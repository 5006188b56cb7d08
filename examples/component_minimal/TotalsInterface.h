// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

// The interface of the component. Its users include only this header.
struct TotalsInterface
    : KAP_T_MT::TKAPInterface<
          "TotalsInterface",
          // Returns the sum of the numbers. An element that is not a number: 0 and a report.
          // [shared read]
          KAP_T_MT::TKAPMethod<"Sum", "TotalsSumProc", double(POSArray* numbers)>> {};
