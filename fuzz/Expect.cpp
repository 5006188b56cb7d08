// SPDX-License-Identifier: MIT
#include "Expect.h"

#include <cstdlib>
#include <iostream>
#include <utility>

void Expect(bool isTrue, const char* what) {
  if (isTrue) return;
  std::cerr << "Expectation failed: " << what << '\n';
  std::abort();
}

// The first run may fill caches, such as method tables. Only what a second run holds is a leak.
void BalancedRuns::Run(const std::function<void()>& run) {
  KAPHost::Snapshot difference;
  for (int i = 0; i < 2; ++i) {
    run();
    fHost.TakeReports();
    KAPHost::Snapshot after = fHost.TakeSnapshot();
    difference = after - fBefore;
    fBefore = std::move(after);
    if (difference.IsEmpty()) return;
  }
  std::cerr << difference << '\n';
  Expect(false, "the accounting is balanced");
}
