#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

extern "C" [[gnu::weak]] void __lsan_disable();

// Runs `run` in a process of its own, which then exits in the usual way; status 0 is expected. What
// it leaves behind is no leak: it is about hosts that nobody can give anything back to any more.
template <class Run>
void ExpectGoodExit(Run run) {
  auto runAndExit = [&] {
    if (__lsan_disable) __lsan_disable();
    run();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(runAndExit(), testing::ExitedWithCode(0), "");
}
