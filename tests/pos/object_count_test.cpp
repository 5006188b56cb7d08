// SPDX-License-Identifier: MIT
#include "posimpl/base/ObjectCount.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

using NPOSObjectImpl::ObjectCount;

// Threads that live together, several times over, so that later ones find the slots of earlier
// ones.
TEST(ObjectCountTest, ExactAfterThreadsHaveEnded) {
  constexpr std::uint64_t kObjects = 500;
  const struct {
    const char* why;
    std::uint64_t fThreads;  // at a time
    int fRounds;
  } rows[] = {
      {"one after the other", 1, 100}, {"a few", 4, 20}, {"more than there are slots", 100, 2}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const auto count = std::make_unique<ObjectCount>();
    for (std::uint64_t i = 0; i < kObjects; ++i) count->AddMade();
    std::uint64_t live = kObjects;
    for (int round = 0; round < row.fRounds; ++round) {
      std::atomic<std::uint64_t> waiting = row.fThreads;
      std::vector<std::thread> threads;
      for (std::uint64_t i = 0; i < row.fThreads; ++i) {
        threads.emplace_back([&, i] {
          count->AddMade();
          --waiting;
          while (waiting != 0) std::this_thread::yield();
          for (std::uint64_t made = 0; made < kObjects; ++made) {
            count->AddMade();
            if (made % (i + 2) != 0) count->AddDeleted();
          }
        });
      }
      while (waiting != 0) ASSERT_GE(count->Live(), live);
      for (std::thread& thread : threads) thread.join();
      for (std::uint64_t i = 0; i < row.fThreads; ++i) live += 1 + (kObjects - 1) / (i + 2) + 1;
      ASSERT_EQ(count->Live(), live);
      // What threads that have ended made is deleted here.
      for (; live > kObjects; --live) count->AddDeleted();
      ASSERT_EQ(count->Live(), live);
    }
  }
}

}  // namespace
