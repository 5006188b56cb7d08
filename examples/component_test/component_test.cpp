// SPDX-License-Identifier: MIT
// A unit test of the component "Totals" with the reference host: what it returns and reports, what
// it does when the host fails, and that it holds nothing afterwards.

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

int gFailed = 0;

void Check(bool passed, const char* what) {
  std::printf("%s: %s\n", passed ? "passed" : "FAILED", what);
  gFailed += !passed;
}

CPOSArray Numbers(const char* text) { return CPOSArray(CPOSObject::CreateFromText(text)); }

void TestResults(KAPHost::Host& host) {
  Check(Totals::Call<"Sum">(Numbers("[1 2.5 -4]").Handle()) == -0.5, "adds numbers");
  Check(Totals::Call<"Sum">(Numbers("[]").Handle()) == 0, "an empty array has the sum 0");
  Check(host.TakeReports().empty(), "nothing is reported");
  Check(Totals::Call<"Sum">(Numbers("[1 two]").Handle()) == 0, "a string is an error");
  Check(host.TakeReports().size() == 1, "which is reported once");
}

// Fails the first host call of the component, then the second, and so on until none fails.
void TestFaults(KAPHost::Host& host) {
  const CPOSArray numbers = Numbers("[1 2 3]");
  const KAPHost::Snapshot before = host.TakeSnapshot();
  bool reported = true;
  for (unsigned long n = 1;; ++n) {
    host.FailCall(KAPHost::KAPFault::kAny, n);
    const double sum = Totals::Call<"Sum">(numbers.Handle());
    const bool fired = host.Fired();
    host.StopFaults();
    const bool failed = !host.TakeReports().empty();
    reported = reported && (failed ? sum == 0 : sum == 6) && (failed || !fired);
    if (!fired) break;
  }
  Check(reported, "whichever host call fails, the sum is 0 and there is a report");
  Check((host.TakeSnapshot() - before).IsEmpty(), "nothing stays held");
}

// Catches failures while the runtime is bound: a CKAPError refers to an error of the host.
void Run(KAPHost::Host& host) {
  const KAPClient client(host.GetProcAddress());
  try {
    TestResults(host);
    TestFaults(host);
  } catch (const std::exception& error) {
    Check(false, error.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: component_test KAPUTILS TOTALS (two shared libraries)\n");
    return 2;
  }
  // Called when the host ends, if a component still holds something then.
  const auto leaked = [](const KAPHost::Snapshot& held) { Check(false, held.Describe().c_str()); };
  try {
    KAPHost::Host host({.fOnReport = {}, .fOnLeak = leaked, .fChecks = true});
    const KAPHost::Component library = host.Load(argv[1]);
    const KAPHost::Component totals = host.Load(argv[2], "Totals");
    Run(host);
  } catch (const std::runtime_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
  return gFailed != 0;
}
