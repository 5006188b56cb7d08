// SPDX-License-Identifier: MIT
#include "KAPUtilsVers.h"

#include "KAPUtilsStamps.h"

namespace {

char gBuildDate[] = KAP_BUILD_DATE;
char gBuildVersion[] = KAP_BUILD_VERSION;
char gBuildID[] = KAP_BUILD_ID;
char gCopyRight[] = KAP_COPYRIGHT;

}  // namespace

// Nothing in the library calls these functions. Without the attributes the linker would drop them
// and the stamps, and the library file could no longer be identified.

[[gnu::used, gnu::retain]] char* KAPUtils_BuildDate() { return gBuildDate; }

[[gnu::used, gnu::retain]] char* KAPUtils_BuildVersion() { return gBuildVersion; }

[[gnu::used, gnu::retain]] char* KAPUtils_BuildID() { return gBuildID; }

[[gnu::used, gnu::retain]] char* KAPUtils_CopyRight() { return gCopyRight; }
