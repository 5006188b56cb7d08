// SPDX-License-Identifier: MIT

// A component, compiled twice with clients of different versions. NAME is the name of its interface
// and of its entry points.

#include "KAP.h"
#include "POSDict.h"
#include "VersionInterface.h"

using namespace KAP_T_MT;

#define JOIN(name, function) name##function
#define ENTRY(name, function) JOIN(name, function)
#define TEXT_OF(name) #name
#define TEXT(name) TEXT_OF(name)

using Interface = VersionInterface<TEXT(NAME) "Interface">;

static void SignProc(POSArray* list) noexcept {
  KAPReportingError([=] {
    CPOSArray signatures(CPOSObject(list), false);
    signatures.Append(CPOSObject::CreateFromText("< by (" TEXT(NAME) ") >", nullptr));
  });
}

static bool HasProgressProc() noexcept {
  return TKAPInterfaceClient<KAPProgressInterface>::TryRefresh();
}

extern "C" [[gnu::visibility("default")]] int ENTRY(NAME, Initialize)(KAPGetProcAddressProc proc) {
  return KAPReportingError([=] {
    return KAPClientInit(proc) && KAPRegisterInterface<Interface>(&SignProc, &HasProgressProc);
  });
}

extern "C" [[gnu::visibility("default")]] void ENTRY(NAME, Terminate)() {
  KAPUnregisterInterface(Interface::kName);
  KAPClientTerminate();
}

extern "C" [[gnu::visibility("default")]] int ENTRY(NAME, GetVersion)() { return 1; }
