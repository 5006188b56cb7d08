// A component, "Totals": adds up the numbers of an array, whoever made it.

#include "KAP.h"
#include "POSDict.h"
#include "TotalsInterface.h"

using namespace KAP_T_MT;

// The host may be gone by the time static objects are destroyed: this one goes first.
struct ExitHook {
  ~ExitHook() { KAPClientKill(); }
};

static double TotalsSumProc(POSArray* numbers) noexcept {
  return KAPReportingError([=] {
    const CPOSArray array(CPOSObject(numbers), false);
    double sum = 0;
    for (unsigned i = 0; i < array.Count(); ++i) sum += CPOSNumber(array[i], false).Get();
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
  KAPUnregisterInterface(TotalsInterface::kName);
  KAPClientTerminate();
}

extern "C" [[gnu::visibility("default")]] int TotalsGetVersion() { return 1; }
