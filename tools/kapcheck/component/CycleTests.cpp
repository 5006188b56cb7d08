// SPDX-License-Identifier: MIT
#include <algorithm>

#include "component/ComponentTests.h"
#include "component/Exports.h"

// Loading, initialising, terminating and unloading: in turn, out of turn, and often.

namespace KAPCheck {

namespace {

constexpr int kRounds = 100;
constexpr std::size_t kNamedSymbols = 3;

std::string Listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kNamedSymbols); ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  const std::size_t others = names.size() - std::min(names.size(), kNamedSymbols);
  return text + (others == 0 ? "" : " and " + std::to_string(others) + " more");
}

void ExpectUnloaded(const Trial& trial, const std::string& when) {
  if (Subject::IsInMemory(trial.About().fPath)) {
    throw TestFailure("stays in memory after dlclose" + when);
  }
}

}  // namespace

void CheckExports(Trial& trial) {
  const std::vector<std::string> exports = ExportsOf(trial.About().fPath);
  std::vector<std::string> expected;
  for (const char* const suffix : {"GetVersion", "Initialize", "Terminate"}) {
    expected.push_back(trial.About().fName + suffix);
  }
  std::vector<std::string> missing, others;
  std::set_difference(expected.begin(), expected.end(), exports.begin(), exports.end(),
                      std::back_inserter(missing));
  std::set_difference(exports.begin(), exports.end(), expected.begin(), expected.end(),
                      std::back_inserter(others));
  if (!missing.empty()) throw TestFailure("does not export " + Listed(missing));
  if (!others.empty()) throw TestFailure("also exports " + Listed(others));
}

void CheckLoading(Trial& trial) {
  for (int round = 1; round <= kRounds; ++round) {
    trial.Step("loads the library");
    const Subject& subject = trial.Load();
    trial.Step("asks for the version");
    const int version = subject.Version();
    if (subject.Version() != version) throw TestFailure("the version changes");
    trial.Step("unloads the library");
    trial.Unload();
    ExpectUnloaded(trial, "");
  }
}

void CheckInitialising(Trial& trial) {
  const Subject& subject = trial.Load();
  const int version = subject.Version();
  trial.Step("initialises");
  trial.MustInitialize();
  if (subject.Version() != version) throw TestFailure("the version changes");
  trial.Step("terminates");
  trial.Terminate();
  trial.Step("initialises again");
  trial.MustInitialize("after a termination");
  trial.Terminate();
}

void CheckCycles(Trial& trial) {
  trial.Load();
  trial.TryPlainly(1);
  // That is for the test "threads".
  if (trial.LeftThreads() > 0) return;
  trial.Unload();
  for (int round = 1; round <= kRounds; ++round) {
    const std::string when = "in round " + std::to_string(round);
    trial.Step("loads, initialises and terminates " + when);
    trial.Load();
    const Remains before = trial.TakeRemains();
    trial.MustInitialize(when);
    trial.MustRunScenario(when);
    trial.Terminate();
    if (trial.LeftThreads() > 0) return;
    trial.Step("unloads the library " + when);
    trial.Unload();
    ExpectUnloaded(trial, " when it was initialised and terminated");
    trial.ExpectNoMore(before, "after round " + std::to_string(round));
  }
}

void CheckTwoInitialisations(Trial& trial) {
  trial.Load();
  trial.TryPlainly(1);
  const Remains before = trial.TakeRemains();
  trial.Step("initialises");
  trial.MustInitialize();
  trial.Step("initialises a second time");
  // Either result is right; each success has a termination.
  const bool isDone = trial.Initialize();
  trial.MustRunScenario("after two initialisations");
  trial.Step("terminates");
  trial.Terminate();
  if (isDone) trial.Terminate();
  trial.ExpectNoMore(before, "after two initialisations");
  trial.MustInitialize("after two initialisations");
  trial.Terminate();
}

void CheckTwoTerminations(Trial& trial) {
  trial.Load();
  trial.Step("terminates before the first initialisation");
  trial.Terminate();
  trial.MustInitialize("after a termination out of turn");
  trial.Terminate();
  const Remains before = trial.TakeRemains();
  trial.Step("terminates a second time");
  trial.Terminate();
  if (trial.TakeRemains().fHeld != before.fHeld) {
    throw TestFailure("the second termination releases or takes something of the host");
  }
  trial.MustInitialize("after two terminations");
  trial.Terminate();
}

// What any test writes is a failure of this one (ComponentCheck).
void CheckOutput(Trial& trial) {
  trial.Load();
  trial.MustInitialize();
  trial.MustRunScenario();
  trial.Terminate();
  if (trial.LeftThreads() == 0) trial.Unload();
}

}  // namespace KAPCheck
