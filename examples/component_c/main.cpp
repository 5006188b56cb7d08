// SPDX-License-Identifier: MIT

// The host of the example: loads the library and the component, and lets C do the rest.

#include <cstdio>

#include "caller.h"
#include "kaphost/KAPHost.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  KAPHost::Host host;
  const KAPHost::Component library = host.Load(argv[1]);
  const KAPHost::Component extremes = host.Load(argv[2], "Extremes");
  const int status = PrintLargest(host.GetProcAddress());
  for (const std::string& report : host.TakeReports())
    std::printf("reported: %s\n", report.c_str());
  return status;
}
