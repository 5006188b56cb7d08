// SPDX-License-Identifier: MIT

// The host of the example: loads the library and the component, lets C do the work, and then calls
// the component from C++ through the same header.

#include <cstdio>

#include "ExtremesInterface.h"
#include "KAP.h"
#include "POSDict.h"
#include "caller.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace {

bool PrintLargestOfOwn(KAPGetProcAddressProc getProc) {
  const KAPClient client(getProc);
  ExtremesInterfaceProcs extremes;
  if (!ExtremesInterfaceLoad(&extremes, getProc)) return false;
  CPOSArray numbers = CPOSArray::New();
  for (const double value : {1.5, 7.0, 3.0}) numbers.AppendOrThrow(CPOSNumber(value));
  double largest = 0;
  if (!extremes.FindLargest(&largest, numbers.Handle())) return false;
  std::printf("from C++: %g\n", largest);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: component_c KAPUTILS EXTREMES (two shared libraries)\n");
    return 2;
  }
  KAPHost::Host host;
  try {
    const KAPHost::Component library = host.Load(argv[1]);
    const KAPHost::Component extremes = host.Load(argv[2], "Extremes");
    const KAPGetProcAddressProc getProc = host.GetProcAddress();
    if (PrintLargest(getProc) != 0 || !PrintLargestOfOwn(getProc)) return 1;
    for (const std::string& report : host.TakeReports()) {
      std::printf("reported: %s\n", report.c_str());
    }
  } catch (const KAPHost::LoadError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
