// SPDX-License-Identifier: MIT
#include "BenchHost.h"

#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

namespace Bench {

namespace {

const HostCalls* gHostCalls = nullptr;

std::jthread SleepingThread() {
  return std::jthread([](const std::stop_token& stop) {
    std::mutex mutex;
    std::condition_variable_any condition;
    std::unique_lock lock(mutex);
    condition.wait(lock, stop, [] { return false; });
  });
}

void RunBound(KAPHost::Host& host) {
  const KAPHost::Component library = host.Load(KAP_LIBRARY_PATH);
  const KAP_T_MT::KAPClient client(host.GetProcAddress());
  const HostCalls calls(host);
  gHostCalls = &calls;
  RegisterBenchmarks();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::ClearRegisteredBenchmarks();  // and the objects that they hold
}

// Returns true if there is no report and the accounting is balanced.
bool Run() {
  bool balanced = true;
  {
    KAPHost::Host host({.fOnReport = {}, .fOnLeak = [&balanced](const KAPHost::Snapshot& leaked) {
                          std::cerr << "leak report:\n" << leaked << '\n';
                          balanced = false;
                        }});
    RunBound(host);
    for (const std::string& report : host.TakeReports()) {
      std::cerr << "reported: " << report << '\n';
      balanced = false;
    }
  }
  return balanced;
}

}  // namespace

HostCalls::HostCalls(const KAPHost::Host& host)
    : fAlloc(host.Proc<KAP_T_MT::KAPMemoryInterface, "Alloc">()),
      fRealloc(host.Proc<KAP_T_MT::KAPMemoryInterface, "Realloc">()),
      fFree(host.Proc<KAP_T_MT::KAPMemoryInterface, "Free">()),
      fNewAtom(host.Proc<KAP_T_MT::KAPStringInterface, "NewStringAtom">()),
      fDeleteAtom(host.Proc<KAP_T_MT::KAPStringInterface, "DeleteStringAtom">()),
      fNewContainer(host.Proc<KAP_T_MT::KAPContainerInterface, "NewFullContainer">()),
      fAddRef(host.Proc<KAP_T_MT::KAPContainerInterface, "AddRef">()),
      fRelease(host.Proc<KAP_T_MT::KAPContainerInterface, "Release">()) {}

const HostCalls& Host() { return *gHostCalls; }

Reference Made(KAPContainer* handle) {
  if (!handle) {
    std::cerr << "cannot create an object for the benchmark\n";
    std::exit(EXIT_FAILURE);
  }
  return Reference(handle, KAPAdopt());
}

}  // namespace Bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
  std::optional<std::jthread> thread;
  if (!std::getenv("KAP_BENCH_SINGLE")) thread.emplace(Bench::SleepingThread());
  try {
    return Bench::Run() ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
