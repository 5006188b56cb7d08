// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "component/ComponentTests.h"
#include "component/ProcessState.h"
#include "component/RandomCalls.h"
#include "process/Progress.h"

// What a component leaves, does and survives after its termination.

extern "C" [[gnu::weak]] void __lsan_disable();

namespace KAPCheck {

namespace {

constexpr int kCallsBefore = 500;
constexpr int kCallsAfter = 1000;

void UseOnce(Trial& trial) {
  trial.Step("initialises");
  trial.MustInitialize();
  trial.MustRunScenario();
  trial.Step("terminates");
  trial.Terminate();
}

void UseAndTerminate(Trial& trial) {
  trial.Load();
  UseOnce(trial);
}

// Without what called the component: each stack ends where it gets to kapcheck.
std::string WithoutOwnFrames(const std::string& report) {
  std::istringstream lines(report);
  std::string text;
  bool isOwn = false;
  for (std::string line; std::getline(lines, line);) {
    const bool isFrame = line.starts_with("    ");
    const bool startsOwn = line.find("kapcheck+0x") != std::string::npos ||
                           line.find("KAPCheck::") != std::string::npos;
    isOwn = isFrame && (isOwn || startsOwn);
    if (!isOwn) text += (text.empty() ? "" : "\n") + line;
  }
  return text;
}

void ExpectNoHostCall(Trial& trial, const std::string& when) {
  const std::vector<std::string> calls = trial.Tap().TakeMisplaced();
  if (!calls.empty()) throw TestFailure("calls the host " + when + ": " + calls.front());
}

}  // namespace

void CheckLeaks(Trial& trial) {
  UseAndTerminate(trial);
  const KAPHost::Snapshot held = trial.TakeRemains().fHeld;
  if (IsMore(held)) ThrowHeld(held, "after its termination");
}

void CheckRegistrations(Trial& trial) {
  UseAndTerminate(trial);
  const std::set<ProcNames> registered = trial.TakeRemains().fRegistered;
  if (!registered.empty()) ThrowRegistered(registered, "after its termination");
}

void CheckDeadHandles(Trial& trial) {
  UseAndTerminate(trial);
  for (const std::string& misuse : trial.TakeMisuse()) {
    throw TestFailure("misuses a handle: " + WithoutOwnFrames(misuse));
  }
}

void CheckHostCallsAfterTermination(Trial& trial) {
  UseAndTerminate(trial);
  trial.Tap().Forbid();
  // Threads that are left are for the test "threads".
  if (trial.LeftThreads() == 0) {
    trial.Step("unloads the library");
    trial.Unload();
  }
  ExpectNoHostCall(trial, "after its termination");
}

// Clients may still have objects, and addresses of procedures.
void CheckCallsAfterTermination(Trial& trial) {
  trial.Load();
  trial.MustInitialize();
  RandomCaller caller(trial, trial.About().fSeed);
  const auto step = [&](const std::string& call) { trial.Step("calls " + call); };
  for (int i = 0; i < kCallsBefore; ++i) caller.CallOne(step);
  trial.Terminate();
  const auto lateStep = [&](const std::string& call) {
    trial.Step("calls after the termination " + call);
  };
  for (int i = 0; i < kCallsAfter; ++i) {
    caller.CallLate(lateStep);
    ExpectNoHostCall(trial, "when it is called after its termination");
  }
}

// What the component uses may keep a file open from its first use on; the second use should not add
// one.
void CheckProcessState(Trial& trial) {
  trial.Load();
  const ProcessState before = TakeProcessState();
  UseOnce(trial);
  const ProcessState once = TakeProcessState();
  UseOnce(trial);
  std::string difference = Difference(once, TakeProcessState());
  if (difference.empty()) difference = Difference(WithoutFiles(before), WithoutFiles(once));
  if (!difference.empty()) throw TestFailure("leaves the process changed: " + difference);
}

void CheckThreads(Trial& trial) {
  const std::ptrdiff_t before = CountThreads();
  UseAndTerminate(trial);
  const std::ptrdiff_t left = trial.LeftThreads();
  if (left > 0) {
    throw TestFailure("leaves threads running after its termination: " + std::to_string(left));
  }
  trial.Step("unloads the library");
  trial.Unload();
  const std::ptrdiff_t unloaded = ThreadsBeyond(before);
  if (unloaded > 0) {
    throw TestFailure("leaves threads running when it is unloaded: " + std::to_string(unloaded));
  }
}

// The host is gone when the process destroys static objects.
void CheckExit(Trial& trial) {
  // What the component holds is lost with the process.
  if (__lsan_disable) __lsan_disable();
  trial.Load();
  trial.MustInitialize();
  trial.MustRunScenario();
  trial.Step("exits without a termination");
  trial.Tap().OnMisplaced([](const std::string& call) {
    SendFailure("calls the host while the process exits: " + call);
    ::_exit(0);
  });
  trial.Tap().Forbid();
  SendPass();
  std::exit(0);
}

}  // namespace KAPCheck
