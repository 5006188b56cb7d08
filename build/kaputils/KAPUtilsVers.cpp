#include "KAPUtilsVers.h"

#include "KAPUtilsStamps.h"

namespace {

// Nothing in the library reads these texts: without the attributes they would be dropped, and a
// library file could no longer be asked what it is.
[[gnu::used, gnu::retain]] char gBuildDate[] = KAP_BUILD_DATE;
[[gnu::used, gnu::retain]] char gBuildVersion[] = KAP_BUILD_VERSION;
[[gnu::used, gnu::retain]] char gBuildID[] = KAP_BUILD_ID;
[[gnu::used, gnu::retain]] char gCopyRight[] = "Copyright (c) the KAPUtils authors";

}  // namespace

char* KAPUtils_BuildDate() { return gBuildDate; }

char* KAPUtils_BuildVersion() { return gBuildVersion; }

char* KAPUtils_BuildID() { return gBuildID; }

char* KAPUtils_CopyRight() { return gCopyRight; }
