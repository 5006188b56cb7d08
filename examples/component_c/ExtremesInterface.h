// SPDX-License-Identifier: MIT
#pragma once

#include "KAPUtilsC.h"

/* The interface of the component. Its users include only this header. */
#define ExtremesInterface_NAME "ExtremesInterface"
#define ExtremesInterface_METHODS(X) X(FindLargest, "ExtremesFindLargestProc")
typedef struct ExtremesInterfaceProcs {
  /* Finds the largest of the array's numbers. Borrows the array. False, and 0 in `*out`, when the
   * array is empty; also, with a report, when an element is not a number. [shared read] */
  bool (*FindLargest)(double* out, POSArray* numbers);
} ExtremesInterfaceProcs;
KAP_TABLE_FUNCTIONS(ExtremesInterface)
