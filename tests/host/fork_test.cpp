// SPDX-License-Identifier: MIT
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>

#include "TestHost.h"
#include "Threads.h"

namespace {

// Forks at any moment of other threads, which also end, make types and errors and take snapshots.
// The child, which has one thread, does the same with its blocks and atoms and those of the others;
// a lock that they held would block it until the alarm.
TEST(ForkTest, TheChildGoesOn) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer of g++ 12 keeps its own locks across a fork";
#endif
  TestHost host(false, KAPHost::HostMemory::kPages);
  std::array<std::atomic<void*>, 128> shared{};
  std::atomic<unsigned> types{0};
  std::atomic<bool> isDone{false};
  const auto work = [&] {
    for (unsigned i = 0; i < 200; ++i) {
      KAPStringAtom* const atom = host.Atom(("text " + std::to_string(i % 100)).c_str());
      void* const block = host.Memory<"Alloc">(std::size_t{16 + 140 * (i % 8)});
      host.Memory<"Free">(shared[i % shared.size()].exchange(block));
      host.Strings<"DeleteStringAtom">(atom);
    }
    const std::string text = "type " + std::to_string(types++ % 500);
    KAPStringAtom* const name = host.Atom(text.c_str());
    KAPContainer* container = nullptr;
    host.Containers<"NewFullContainer">(&container, nullptr, name, name, nullptr);
    host.Containers<"Release">(container);
    host.Strings<"DeleteStringAtom">(name);
    host.Errors<"Release">(host.Errors<"NewError">(text.c_str(), "c", 0L, nullptr, nullptr));
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
  RunOnThreads(
      [&](int) {
        while (!isDone) std::thread(work).join();
      },
      [&] { host.TakeSnapshot(); });
  forking.join();
  for (auto& block : shared) host.Memory<"Free">(block.exchange(nullptr));
}

}  // namespace
