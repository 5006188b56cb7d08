// SPDX-License-Identifier: MIT
#pragma once

#include "KAPUtilsC.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Prints the largest number of a few arrays. Returns 0, or 1 when an interface is missing. */
int PrintLargest(KAPGetProcAddressProc getProc);

#ifdef __cplusplus
}
#endif
