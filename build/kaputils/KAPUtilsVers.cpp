#include "KAPUtilsVers.h"

#include "KAPUtilsStamps.h"

namespace {

char gBuildDate[] = KAP_BUILD_DATE;
char gBuildVersion[] = KAP_BUILD_VERSION;
char gBuildID[] = KAP_BUILD_ID;
char gCopyRight[] = KAP_COPYRIGHT;

}  // namespace

// Nothing in the library calls these: without the attributes they would be dropped, and a library
// file could no longer be asked what it is.

[[gnu::used, gnu::retain]] char* KAPUtils_BuildDate() { return gBuildDate; }

[[gnu::used, gnu::retain]] char* KAPUtils_BuildVersion() { return gBuildVersion; }

[[gnu::used, gnu::retain]] char* KAPUtils_BuildID() { return gBuildID; }

[[gnu::used, gnu::retain]] char* KAPUtils_CopyRight() { return gCopyRight; }
