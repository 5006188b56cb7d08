// SPDX-License-Identifier: MIT
#include <chrono>
#include <exception>
#include <filesystem>
#include <mutex>
#include <thread>

#include "component/ComponentTests.h"
#include "component/RandomCalls.h"

// The component at work: as its scenario uses it, with random arguments, on several threads, and
// while the host moves its procedures.

namespace KAPCheck {

namespace {

constexpr int kScenarioRuns = 10;
constexpr int kRandomCalls = 5000;
constexpr int kCallsBetweenMoves = 50;
constexpr int kThreads = 4;
constexpr int kCallsOfAThread = 1000;

void NoProcedure() {}

// Registers and unregisters an interface that has no users, which increments the counter.
void MoveCounter(KAPHost::Host& host) {
  host.Register("KAPCheckInterface", "Move", "KAPCheckMoveProc",
                reinterpret_cast<void*>(&NoProcedure));
  host.Unregister("KAPCheckInterface");
}

std::ptrdiff_t CountThreads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

// A thread that has been joined may still be listed for a moment.
void ExpectThreads(std::ptrdiff_t expected) {
  using namespace std::chrono_literals;
  for (int attempt = 0; attempt < 100; ++attempt) {
    if (CountThreads() <= expected) return;
    std::this_thread::sleep_for(10ms);
  }
  throw TestFailure("leaves threads running after its termination: " +
                    std::to_string(CountThreads() - expected));
}

// Calls the declared interfaces on several threads, each with objects of its own, while the counter
// moves.
void CallOnThreads(Trial& trial) {
  std::mutex mutex;
  std::exception_ptr failure;
  std::atomic<int> running = kThreads;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, seed = trial.About().fSeed + static_cast<unsigned long>(i)] {
      try {
        CallRandomly(trial, seed, kCallsOfAThread, [](const std::string&) {});
      } catch (...) {
        const std::lock_guard lock(mutex);
        failure = std::current_exception();
      }
      --running;
    });
  }
  while (running != 0) {
    MoveCounter(trial.Host());
    std::this_thread::yield();
  }
  for (std::thread& thread : threads) thread.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace

void CheckScenario(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  const Remains before = trial.TakeRemains();
  trial.MustInitialize();
  for (int run = 1; run <= kScenarioRuns; ++run) {
    trial.MustRunScenario("in run " + std::to_string(run));
  }
  trial.Terminate();
  trial.ExpectNoMore(before, "after the scenario", Trial::Expected::kNothingRegistered);
}

void CheckCounter(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  const Remains before = trial.TakeRemains();
  trial.MustInitialize();
  trial.MustRunScenario();
  MoveCounter(trial.Host());
  trial.MustRunScenario("after the counter moved");
  trial.Step("the host registers its procedures anew, at other addresses");
  trial.Tap().MoveProcedures();
  trial.MustRunScenario("after the host moved its procedures");
  trial.Step("terminates after the host moved its procedures");
  trial.Terminate();
  const std::vector<std::string> calls = trial.Tap().TakeMisplaced();
  if (!calls.empty()) {
    throw TestFailure("calls a procedure that is no longer registered: " + calls.front());
  }
  trial.ExpectNoMore(before, "after the counter moved");
}

void CheckRandomCalls(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  const Remains before = trial.TakeRemains();
  trial.MustInitialize();
  int made = 0;
  CallRandomly(trial, trial.About().fSeed, kRandomCalls, [&](const std::string& call) {
    if (++made % kCallsBetweenMoves == 0) MoveCounter(trial.Host());
    trial.Step("random call " + std::to_string(made) + ": " + call);
  });
  trial.Terminate();
  trial.ExpectNoMore(before, "after random calls");
}

void CheckThreads(Trial& trial) {
  trial.Load();
  const std::ptrdiff_t threads = CountThreads();
  trial.MustInitialize();
  if (trial.Scenario() && !trial.Scenario()->Declarations().empty()) {
    trial.Step("calls its declared interfaces on several threads");
    CallOnThreads(trial);
  }
  trial.Terminate();
  ExpectThreads(threads);
}

}  // namespace KAPCheck
