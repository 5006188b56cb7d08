// SPDX-License-Identifier: MIT
// KAPUtilsC.h in C, where it has enumerations and handles of its own: checked by the compiler.

#include "KAPUtilsC.h"
#include "Numbers.h"

#define KAP_SAME_NUMBER(name, number) static_assert(name == number, #name " has changed");
KAP_PUBLISHED_NUMBERS(KAP_SAME_NUMBER)

#if KAPUTILS_VERSION < 0x10101
#error "the header does not state its version"
#endif
