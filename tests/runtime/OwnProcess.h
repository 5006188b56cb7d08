// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

extern "C" [[gnu::weak]] void __lsan_disable();

// Runs `run` in a process of its own, which then exits normally; expects status 0. The process may
// leak blocks: these tests are about hosts that can no longer be called to release them.
template <class Run>
void ExpectGoodExit(Run run) {
  auto runAndExit = [&] {
    if (__lsan_disable) __lsan_disable();
    run();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(runAndExit(), testing::ExitedWithCode(0), "");
}
