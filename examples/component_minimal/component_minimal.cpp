// SPDX-License-Identifier: MIT

// A component, "Totals": adds the numbers of an array. Any component may have created the array.

#include "KAP.h"
#include "POSDict.h"
#include "TotalsInterface.h"

using namespace KAP_T_MT;

// The host may not exist any more when the process destroys static objects. This one goes first.
struct ExitHook {
  ~ExitHook() { KAPClientKill(); }
};

static double TotalsSumProc(POSArray* numbers) noexcept {
  return KAPReportingError([=] {
    const CPOSArray array{CPOSObject(numbers)};
    double sum = 0;
    for (unsigned i = 0; i < array.Count(); ++i) sum += CPOSNumber(array[i]).Get();
    return sum;
  });
}

extern "C" [[gnu::visibility("default")]] int TotalsInitialize(KAPGetProcAddressProc getProc) {
  static const ExitHook hook;
  return KAPReportingError([=] {
    return KAPClientInit(getProc) && KAPRegisterInterface<TotalsInterface>(&TotalsSumProc);
  });
}

extern "C" [[gnu::visibility("default")]] void TotalsTerminate() {
  KAPReportingError([] {
    KAPUnregisterInterface(TotalsInterface::kName);
    KAPClientTerminate();
  });
}

extern "C" [[gnu::visibility("default")]] int TotalsGetVersion() { return 1; }
