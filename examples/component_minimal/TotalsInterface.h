#pragma once

#include "kap/KAPInterface.h"

// What the component offers; its users include this header and nothing else of it.
struct TotalsInterface
    : KAP_T_MT::TKAPInterface<
          "TotalsInterface",
          // The sum of an array's numbers. An element that is no number: 0 and a report.
          KAP_T_MT::TKAPMethod<"Sum", "TotalsSumProc", double(POSArray* numbers)>> {};
