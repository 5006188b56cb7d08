// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cstdlib>

#include "component/ComponentTests.h"
#include "component/RandomCalls.h"

// What a component leaves, does and survives after its termination.

extern "C" [[gnu::weak]] void __lsan_disable();

namespace KAPCheck {

namespace {

void UseAndTerminate(Trial& trial) {
  trial.Load();
  trial.Step("initialises");
  trial.MustInitialize();
  trial.MustRunScenario();
  trial.Step("terminates");
  trial.Terminate();
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
  // The host's own reports start like this; a component's are not about misuse.
  static const std::string kOwn = "KAP host: ";
  for (const std::string& report : trial.Host().TakeReports()) {
    if (report.starts_with(kOwn))
      throw TestFailure("misuses a handle: " + report.substr(kOwn.size()));
  }
}

void CheckHostCallsAfterTermination(Trial& trial) {
  UseAndTerminate(trial);
  trial.Tap().Forbid();
  trial.Step("unloads the library");
  trial.Unload();
  ExpectNoHostCall(trial, "after its termination");
}

void CheckCallsAfterTermination(Trial& trial) {
  trial.Load();
  trial.MustInitialize();
  const std::vector<LateCall> calls = LateCallsOf(trial);
  trial.Terminate();
  trial.Tap().Forbid();
  for (const LateCall& call : calls) {
    trial.Step("calls " + call.fName + " after the termination");
    call.Make();
  }
  ExpectNoHostCall(trial, "when it is called after its termination");
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
