// SPDX-License-Identifier: MIT
#include "Expect.h"

#include <cstdlib>
#include <iostream>

void Expect(bool isTrue, const char* what) {
  if (isTrue) return;
  std::cerr << "Expectation failed: " << what << '\n';
  std::abort();
}

// The first run may fill caches, such as method tables. Only what a second run holds is a leak.
void BalancedRuns::Run(const std::function<void()>& run) {
  run();
  fHost.TakeReports();
  if (fHost.TakeDigest() == fBefore) return;
  const KAPHost::Snapshot before = fHost.TakeSnapshot();
  run();
  fHost.TakeReports();
  const KAPHost::Snapshot difference = fHost.TakeSnapshot() - before;
  if (!difference.IsEmpty()) std::cerr << difference << '\n';
  Expect(difference.IsEmpty(), "the accounting is balanced");
  fBefore = fHost.TakeDigest();
}
