// SPDX-License-Identifier: MIT
#include <atomic>
#include <exception>
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

// Calls the declared interfaces on several threads, each with objects of its own, while the counter
// moves.
void CallOnThreads(Trial& trial) {
  std::mutex mutex;
  std::exception_ptr failure;
  std::atomic<int> running = kThreads;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, number = static_cast<unsigned>(i + 1)] {
      try {
        RandomCaller caller(trial, trial.About().fSeed, number);
        for (int made = 0; made < kCallsOfAThread; ++made) caller.CallOne([](const auto&) {});
        caller.ReleaseAll();
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
  trial.TryPlainly(1);
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
  trial.TryPlainly(3);
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
  RandomCaller caller(trial, trial.About().fSeed);
  for (int made = 1; made <= kRandomCalls; ++made) {
    if (made % kCallsBetweenMoves == 0) MoveCounter(trial.Host());
    caller.CallOne([&](const std::string& call) {
      trial.Step("random call " + std::to_string(made) + ": " + call);
    });
  }
  trial.Step("releases all objects");
  caller.ReleaseAll();
  trial.Terminate();
  trial.ExpectNoMore(before, "after random calls");
  trial.ExpectNoMisuse("in random calls");
}

void CheckConcurrentCalls(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  const Remains before = trial.TakeRemains();
  trial.MustInitialize();
  trial.Step("calls its declared interfaces on several threads");
  CallOnThreads(trial);
  trial.Terminate();
  trial.ExpectNoMore(before, "after calls on several threads");
}

}  // namespace KAPCheck
