// SPDX-License-Identifier: MIT

// A component in C, "Extremes": finds the largest number of an array.

#include <threads.h>

#include "ExtremesInterface.h"

#define EXPORT __attribute__((visibility("default")))

// The tables of others that the component uses.
typedef struct Tables {
  KAPContainerInterfaceProcs containers;
  POSArrayInterfaceProcs arrays;
  POSNumberInterfaceProcs numbers;
} Tables;

static KAPGetProcAddressProc gGetProc;
static KAPBinderInterfaceProcs gBinder;
static const unsigned long* gUnregisterCount;

static mtx_t gLock;
static bool gHasLock;
static Tables gTables;
static bool gAreLoaded;
static unsigned long gLoadedAt;  // the unregister counter at that time

static bool Fail(const char* message) {
  gBinder.KAPReportError(message);
  return false;
}

// Copies the tables, loaded again if an interface was unregistered since. False: one is missing.
static bool GetTables(Tables* out) {
  const unsigned long count = __atomic_load_n(gUnregisterCount, __ATOMIC_ACQUIRE);
  mtx_lock(&gLock);
  if (!gAreLoaded || gLoadedAt != count) {
    gAreLoaded = KAPContainerInterfaceLoad(&gTables.containers, gGetProc) &&
                 POSArrayInterfaceLoad(&gTables.arrays, gGetProc) &&
                 POSNumberInterfaceLoad(&gTables.numbers, gGetProc);
    gLoadedAt = count;
  }
  const bool areLoaded = gAreLoaded;
  *out = gTables;
  mtx_unlock(&gLock);
  return areLoaded;
}

static bool FindLargest(double* out, POSArray* numbers) {
  *out = 0;
  Tables use;
  if (!GetTables(&use)) return Fail("Extremes: the array and number interfaces are missing");

  double largest = 0;
  const unsigned count = use.arrays.Count(numbers);
  for (unsigned i = 0; i < count; ++i) {
    POSObject* const element = use.arrays.GetAt(numbers, i);  // a new reference
    const bool isNumber = element && use.numbers.IsPOSNumber(element);
    const double value = isNumber ? use.numbers.Get(element) : 0;
    use.containers.Release(element);
    if (!isNumber) return Fail("Extremes: an element is not a number");
    if (i == 0 || value > largest) largest = value;
  }
  *out = largest;
  return count > 0;
}

EXPORT int ExtremesInitialize(KAPGetProcAddressProc getProc);
EXPORT void ExtremesTerminate(void);
EXPORT int ExtremesGetVersion(void);

int ExtremesInitialize(KAPGetProcAddressProc getProc) {
  static const ExtremesInterfaceProcs procs = {FindLargest};
  gGetProc = getProc;
  if (!getProc || !KAPBinderInterfaceLoad(&gBinder, getProc)) return 0;
  gUnregisterCount = gBinder.KAPGetUnregisterCountAddr();
  gAreLoaded = false;
  gHasLock = mtx_init(&gLock, mtx_plain) == thrd_success;
  return gHasLock && ExtremesInterfaceRegister(&procs, &gBinder);
}

// The host calls it after a failed initialisation too.
void ExtremesTerminate(void) {
  if (!gHasLock) return;
  gBinder.KAPUnregisterInterface(ExtremesInterface_NAME);
  mtx_destroy(&gLock);
  gHasLock = false;
}

int ExtremesGetVersion(void) { return 1; }
