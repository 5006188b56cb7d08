// SPDX-License-Identifier: MIT
#include "component/ComponentCheck.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>

#include "base/Failure.h"
#include "base/Printable.h"
#include "component/ComponentTests.h"
#include "component/Exports.h"
#include "process/ChildProcess.h"
#include "process/Folder.h"
#include "process/Progress.h"
#include "process/Verdict.h"

namespace KAPCheck {

namespace {

using PosUtil::Failure;
using PosUtil::Printable;

constexpr char kOutputTest[] = "output";

void Fail(Result& result, const std::string& reason) {
  result.fOutcome = Outcome::kFailed;
  result.fReason = reason;
}

// Fills in the result from what the test's process sent and how it ended.
void Judge(Result& result, const ComponentTest& test, const Ending& ending, double limit) {
  const Progress progress = ParseProgress(ending.fMessages);
  result.fSeconds = ending.fSeconds;
  if (!progress.fNote.empty()) result.fDescription += " (" + Printable(progress.fNote) + ")";
  if (progress.fHasFailed) {
    Fail(result, progress.fReason);
  } else {
    const std::string end =
        progress.fHasPassed ? Misbehaviour(ending, limit) : EndWithoutVerdict(ending, limit);
    if (!end.empty()) {
      Fail(result, end);
      result.fStep = progress.fHasPassed ? "exits" : progress.fStep;
    } else if (test.fWatchesProcesses && ending.fLeft != 0) {
      Fail(result,
           "leaves processes running after its termination: " + std::to_string(ending.fLeft));
    }
  }
  if (result.fOutcome == Outcome::kFailed) result.fErrors = ending.fErrors;
}

class ComponentCheck {
 public:
  ComponentCheck(const Target& target, std::chrono::milliseconds limit)
      : fTarget(target), fLimit(limit) {
    if (target.fScenario.empty()) return;
    // Read without loading: this process runs no code of others.
    const std::vector<std::string> exports = ExportsOf(target.fScenario);
    const auto has = [&](const char* name) {
      return std::binary_search(exports.begin(), exports.end(), name);
    };
    fHasScenario = has("KAPCheckScenario");
    fHasDeclarations = has("KAPCheckDeclarations");
    if (!fHasScenario && !fHasDeclarations) {
      throw Failure(Printable(target.fScenario) +
                    ": exports neither KAPCheckScenario nor KAPCheckDeclarations");
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

  // The results of some tests, and of those that had to pass for them but did not.
  std::vector<Result> ResultsOf(const std::vector<std::string>& names) {
    // Output may appear in any test. It is the fault of one.
    const auto output = fResults.find(kOutputTest);
    if (output != fResults.end() && output->second.fOutcome == Outcome::kPassed &&
        !fOutput.empty()) {
      Fail(output->second, "writes to standard output in the test " + fOutput);
    }
    std::vector<Result> results;
    for (const ComponentTest& test : ComponentTests()) {
      const auto result = fResults.find(test.fName);
      if (result == fResults.end()) continue;
      const bool isWanted =
          names.empty() || std::find(names.begin(), names.end(), test.fName) != names.end();
      if (isWanted || result->second.fOutcome == Outcome::kFailed) {
        results.push_back(result->second);
      }
    }
    return results;
  }

 private:
  void RunNow(const ComponentTest& test, Result& result) {
    const Folder folder;
    const std::string scenario = ScenarioFor(test);
    const Ending ending = RunAgain({"kapcheck", "run-component-test", test.fName, fTarget.fPath,
                                    fTarget.fName, std::to_string(fTarget.fSeed), scenario},
                                   folder.Path(), fLimit);
    if (fOutput.empty() && !ending.fOutput.empty()) {
      fOutput = std::string(test.fName) + ": \"" + Printable(ending.fOutput) + '"';
    }
    const bool usesScenario = fHasScenario && test.fNeeds >= Needs::kInitialising;
    if (usesScenario && scenario.empty()) result.fDescription += " (without the scenario)";
    Judge(result, test, ending, std::chrono::duration<double>(fLimit).count());
  }

  // Why a test with these needs cannot run; "" if it can.
  std::string WhyNot(Needs needs) {
    if (needs == Needs::kNothing) return "";
    if (!Passes("load")) return "needs \"load\" to pass";
    if (needs == Needs::kLoading) return "";
    if (!Passes("initialise")) return "needs \"initialise\" to pass";
    if (needs == Needs::kInitialising) return "";
    const bool needsDeclarations = needs == Needs::kDeclarations;
    if (fTarget.fScenario.empty()) return "needs --scenario";
    if (needsDeclarations && !fHasDeclarations) return "needs a plug-in that declares interfaces";
    if (!needsDeclarations && !fHasScenario) return "needs a plug-in with a scenario";
    if (needs == Needs::kScenario || !fHasScenario) return "";
    return Passes("scenario") ? "" : "needs \"scenario\" to pass";
  }

  // A scenario that fails is the fault of one test; the others do without it.
  std::string ScenarioFor(const ComponentTest& test) {
    if (fTarget.fScenario.empty() || test.fNeeds < Needs::kInitialising) return "";
    const bool isUsed = test.fNeeds == Needs::kScenario || !fHasScenario || Passes("scenario");
    return isUsed ? fTarget.fScenario : "";
  }

  bool Passes(const std::string& name) {
    return Run(*FindComponentTest(name)).fOutcome == Outcome::kPassed;
  }

  Target fTarget;
  std::chrono::milliseconds fLimit;
  bool fHasScenario = false;
  bool fHasDeclarations = false;
  std::string fOutput;  // the first test that wrote to standard output, and what
  std::map<std::string, Result> fResults;
};

}  // namespace

std::string NameFromFile(const std::string& path) {
  const std::string file = std::filesystem::path(path).filename().string();
  const std::size_t end = file.find(".so");
  if (file.substr(0, 3) != "lib" || end == std::string::npos) return "";
  return file.substr(3, end - 3);
}

bool IsComponentName(const std::string& name) {
  const auto isLetter = [](char c) { return (c | 32) >= 'a' && (c | 32) <= 'z'; };
  return !name.empty() && std::all_of(name.begin(), name.end(), [&](const char& c) {
    return c == '_' || isLetter(c) || (c >= '0' && c <= '9' && &c != name.data());
  });
}

Results CheckComponent(const Target& target, const std::vector<std::string>& names,
                       std::chrono::milliseconds limit) {
  for (const std::string& name : names) {
    if (FindComponentTest(name)) continue;
    throw Failure("there is no test \"" + Printable(name) + "\"; see --list", PosUtil::kExitUsage);
  }
  ExportsOf(target.fPath);
  Results results;
  results.fSubject =
      std::filesystem::path(target.fPath).filename().string() + " (" + target.fName + ")";
  results.fSeed = target.fSeed;
  results.fFacts = {{"library", target.fPath}, {"component", target.fName}};
  if (!target.fScenario.empty()) results.fFacts.emplace_back("scenario", target.fScenario);
  ComponentCheck check(target, limit);
  try {
    for (const ComponentTest& test : ComponentTests()) {
      if (names.empty() || std::find(names.begin(), names.end(), test.fName) != names.end()) {
        check.Run(test);
      }
    }
  } catch (const Interrupted& interrupted) {
    results.fSignal = interrupted.Signal();
  }
  results.fResults = check.ResultsOf(names);
  return results;
}

Results ListedTests() {
  Results results;
  for (const ComponentTest& test : ComponentTests()) {
    results.fResults.push_back(
        {test.fName, Outcome::kNotRun, test.fDescription, {}, {}, {}, {}, 0});
  }
  return results;
}

void RunComponentTest(const std::string& name, const Target& target) {
  // Never destroyed: what a component does when it is unloaded must not hide the verdict.
  std::optional<Trial> trial;
  try {
    const ComponentTest* const test = FindComponentTest(name);
    if (!test) throw TestFailure("unknown test");
    trial.emplace(target, test->fWatch);
    test->fRun(*trial);
    SendPass();
  } catch (const std::exception& failure) {
    SendFailure(failure.what());
  } catch (...) {
    SendFailure("an exception of unknown type ends the test");
  }
  // Static objects of the component are for the test "exit".
  std::fflush(nullptr);
  ::_exit(0);
}

}  // namespace KAPCheck
