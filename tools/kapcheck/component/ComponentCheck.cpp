// SPDX-License-Identifier: MIT
#include "component/ComponentCheck.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>

#include "base/Failure.h"
#include "base/Printable.h"
#include "component/ComponentTests.h"
#include "component/Exports.h"
#include "process/ChildProcess.h"
#include "process/Folder.h"
#include "process/Verdict.h"

namespace KAPCheck {

namespace {

// Fills in the result from what the test's process sent and how it ended.
void Judge(Result& result, const ComponentTest& test, const Ending& ending, double limit) {
  result.fSeconds = ending.fSeconds;
  std::string step, verdict, reason;
  for (const nlohmann::json& message : ParseMessages(ending.fMessages)) {
    step = message.value("step", step);
    // A failure counts more than a verdict before it.
    if (message.contains("verdict") && verdict != "failed") {
      verdict = message["verdict"];
      reason = message.value("reason", "");
    }
  }
  if (verdict.empty()) {
    reason = EndWithoutVerdict(ending, limit);
  } else if (verdict == "passed") {
    reason = Misbehaviour(ending, limit);
    if (!reason.empty()) step = "exits";
  }
  if (reason.empty() && test.fWatchesOutput && !ending.fOutput.empty()) {
    reason = "writes to standard output: \"" + PosUtil::Printable(ending.fOutput) + '"';
    step.clear();
  }
  if (reason.empty()) return;
  result.fOutcome = Outcome::kFailed;
  result.fReason = reason;
  if (verdict != "failed") result.fStep = step;
  result.fErrors = ending.fErrors;
}

class ComponentCheck {
 public:
  ComponentCheck(const Target& target, std::chrono::milliseconds limit)
      : fTarget(target), fLimit(limit) {
    // What the plug-in declares is known to the test processes alone: this one loads nothing.
    if (!target.fScenario.empty()) {
      const std::vector<std::string> exports = ExportsOf(target.fScenario);
      fHasDeclarations = std::binary_search(exports.begin(), exports.end(), "KAPCheckDeclarations");
    }
  }

  // Runs a test once, after those that it needs.
  const Result& Run(const ComponentTest& test) {
    const auto known = fResults.find(test.fName);
    if (known != fResults.end()) return known->second;
    Result result{test.fName, Outcome::kPassed, test.fDescription, {}, {}, {}, {}, 0};
    result.fReason = WhyNot(test.fNeeds);
    if (result.fReason.empty()) {
      RunNow(test, result);
    } else {
      result.fOutcome = Outcome::kNotRun;
    }
    return fResults.emplace(test.fName, std::move(result)).first->second;
  }

 private:
  void RunNow(const ComponentTest& test, Result& result) {
    const Folder folder;
    const Ending ending =
        RunAgain({"kapcheck", "run-component-test", test.fName, fTarget.fPath, fTarget.fName,
                  std::to_string(fTarget.fSeed), ScenarioFor(test)},
                 folder.Path(), fLimit);
    Judge(result, test, ending, std::chrono::duration<double>(fLimit).count());
  }

  // Why a test with these needs cannot run; "" if it can.
  std::string WhyNot(Needs needs) {
    if (needs == Needs::kNothing) return "";
    if (!Passes("load")) return "needs \"load\" to pass";
    if (needs == Needs::kLoading) return "";
    if (!Passes("initialise")) return "needs \"initialise\" to pass";
    if (needs == Needs::kInitialising) return "";
    if (fTarget.fScenario.empty()) return "needs --scenario";
    if (needs == Needs::kScenario) return "";
    if (!Passes("scenario")) return "needs \"scenario\" to pass";
    const bool needsMore = needs == Needs::kDeclarations && !fHasDeclarations;
    return needsMore ? "needs a scenario that declares interfaces" : "";
  }

  // A scenario that fails is the affair of one test; the others do without it.
  std::string ScenarioFor(const ComponentTest& test) {
    if (fTarget.fScenario.empty() || test.fNeeds < Needs::kInitialising) return "";
    return test.fNeeds == Needs::kScenario || Passes("scenario") ? fTarget.fScenario : "";
  }

  bool Passes(const std::string& name) {
    return Run(*FindComponentTest(name)).fOutcome == Outcome::kPassed;
  }

  Target fTarget;
  std::chrono::milliseconds fLimit;
  bool fHasDeclarations = false;
  std::map<std::string, Result> fResults;
};

}  // namespace

std::string NameFromFile(const std::string& path) {
  const std::string file = std::filesystem::path(path).filename().string();
  const std::size_t end = file.find(".so");
  if (file.substr(0, 3) != "lib" || end == std::string::npos) return "";
  return file.substr(3, end - 3);
}

Results CheckComponent(const Target& target, const std::vector<std::string>& names,
                       std::chrono::milliseconds limit) {
  ExportsOf(target.fPath);
  Results results;
  results.fSubject =
      std::filesystem::path(target.fPath).filename().string() + " (" + target.fName + ")";
  results.fSeed = target.fSeed;
  ComponentCheck check(target, limit);
  for (const ComponentTest& test : ComponentTests()) {
    if (!names.empty() && std::find(names.begin(), names.end(), test.fName) == names.end()) {
      continue;
    }
    results.fResults.push_back(check.Run(test));
  }
  return results;
}

void RunComponentTest(const std::string& name, const Target& target) {
  try {
    const ComponentTest& test = *FindComponentTest(name);
    Trial trial(target, test.fChecks);
    test.fRun(trial);
    SendPass();
  } catch (const std::exception& failure) {
    SendFailure(failure.what());
  }
  // Static objects of the component are the business of the test "exit".
  std::fflush(nullptr);
  ::_exit(0);
}

}  // namespace KAPCheck
