// SPDX-License-Identifier: MIT

// The side of a host that is written in C: makes arrays with the library and passes them to the
// component.

#include "caller.h"

#include <stdio.h>

#include "ExtremesInterface.h"

int PrintLargest(KAPGetProcAddressProc getProc) {
  KAPContainerInterfaceProcs containers;
  POSObjectStaticsProcs objects;
  ExtremesInterfaceProcs extremes;
  if (!KAPContainerInterfaceLoad(&containers, getProc) ||
      !POSObjectStaticsLoad(&objects, getProc) || !ExtremesInterfaceLoad(&extremes, getProc)) {
    return 1;
  }
  static const char* const texts[] = {"[3 -1 1815 2.5]", "[-2 -7]", "[]", "[1 two 3]"};
  for (size_t i = 0; i < sizeof texts / sizeof *texts; ++i) {
    POSArray* const numbers = objects.CreateFromText(texts[i], NULL);
    double largest;
    if (extremes.FindLargest(&largest, numbers)) {
      printf("%s: %g\n", texts[i], largest);
    } else {
      printf("%s: none\n", texts[i]);
    }
    containers.Release(numbers);
  }
  fflush(stdout);
  return 0;
}
