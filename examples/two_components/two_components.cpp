// SPDX-License-Identifier: MIT

// A host with two components: the library makes arrays, Totals adds their numbers. Neither depends
// on the other.

#include <cstdio>
#include <exception>
#include <stdexcept>

#include "POSDict.h"
#include "TotalsInterface.h"
#include "kap/KAPClient.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace {

using Totals = TKAPInterfaceClient<TotalsInterface>;

void PrintSum(const char* text) {
  const CPOSObject numbers = CPOSObject::CreateFromText(text);
  std::printf("%s: %g\n", text, Totals::Call<"Sum">(numbers.Handle()));
}

void Work(KAPHost::Host& host) {
  PrintSum("[1 2.5 -4 1815]");
  PrintSum("[]");
  PrintSum("[1 two 3]");
  for (const std::string& report : host.TakeReports()) {
    std::printf("reported: %s\n", report.c_str());
  }
}

// Catches failures while the runtime is bound: a CKAPError refers to an error of the host.
int Run(KAPHost::Host& host) {
  const KAPClient client(host.GetProcAddress());
  try {
    Work(host);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: two_components KAPUTILS TOTALS (two shared libraries)\n");
    return 2;
  }
  KAPHost::Host host;
  try {
    const KAPHost::Component library = host.Load(argv[1]);
    const KAPHost::Component totals = host.Load(argv[2], "Totals");
    return Run(host);
  } catch (const std::runtime_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
