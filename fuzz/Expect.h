// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>

#include "kaphost/KAPHost.h"

// Aborts the process unless `isTrue`. `what` is the expectation.
void Expect(bool isTrue, const char* what);

// Runs functions that must not leak anything of the host. Nothing else uses the host meanwhile: the
// digest after one run is the one before the next, because it takes as long as a small input.
class BalancedRuns {
 public:
  explicit BalancedRuns(KAPHost::Host& host) : fHost(host), fBefore(host.TakeDigest()) {}

  void Run(const std::function<void()>& run);

 private:
  KAPHost::Host& fHost;
  std::uint64_t fBefore;
};
