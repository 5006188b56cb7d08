// SPDX-License-Identifier: MIT
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "TestHost.h"
#include "Threads.h"

namespace {

// Forks at any moment of other threads. The child, which has one thread, goes on with its blocks
// and atoms and those of the others; a lock that they held would block it until the alarm.
TEST(ForkTest, TheChildGoesOn) {
  TestHost host(false, KAPHost::HostMemory::kPages);
  std::atomic<void*> shared{nullptr};
  std::atomic<bool> isDone{false};
  const auto work = [&] {
    for (int i = 0; i < 200; ++i) {
      KAPStringAtom* const atom = host.Atom(("text " + std::to_string(i % 100)).c_str());
      void* const block = host.Memory<"Alloc">(48ul);
      host.Memory<"Free">(shared.exchange(block));
      host.Strings<"DeleteStringAtom">(atom);
    }
  };
  std::thread forking([&] {
    for (int i = 0; i < 30; ++i) {
      const pid_t child = fork();
      if (child == 0) {
        alarm(20);
        for (int round = 0; round < 20; ++round) work();
        host.TakeSnapshot();
        _exit(0);
      }
      int status = -1;
      waitpid(child, &status, 0);
      EXPECT_EQ(status, 0) << "fork " << i;
    }
    isDone = true;
  });
  RunOnThreads([&](int) {
    while (!isDone) work();
  });
  forking.join();
  host.Memory<"Free">(shared.exchange(nullptr));
}

}  // namespace
