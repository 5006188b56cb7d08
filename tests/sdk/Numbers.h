// SPDX-License-Identifier: MIT
#pragma once

/* The published numbers (docs/compatibility.md), written out: they must not follow an enumeration
 * that somebody reorders. */
#define KAP_PUBLISHED_NUMBERS(X) \
  X(kPOSNumber, 1)               \
  X(kPOSString, 2)               \
  X(kPOSUnicodeString, 3)        \
  X(kPOSBinData, 4)              \
  X(kPOSRawPointer, 5)           \
  X(kPOSArray, 6)                \
  X(kPOSDict, 7)                 \
  X(kKAPSeekFromStart, 0)        \
  X(kKAPSeekFromPosition, 1)     \
  X(kKAPSeekFromEnd, 2)
