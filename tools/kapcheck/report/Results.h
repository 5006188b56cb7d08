// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace KAPCheck {

enum class Outcome {
  kPassed,
  kFailed,
  kNotRun,
  kBlocked  // a check of a host needs what another check has found to fail
};

// The result of one test or check.
struct Result {
  std::string fName;
  Outcome fOutcome = Outcome::kPassed;
  std::string fDescription;  // what the test is about, or the sentence of the contract
  std::string fReason;       // why it failed, did not run or is blocked
  std::string fStep;         // what was going on when the process crashed, ended or hung
  std::string fProcedure;    // "interface, method" of a host's check
  std::string fErrors;       // what the process wrote to standard error
  double fSeconds = 0;
};

// The results of one run.
struct Results {
  std::string fSubject;  // the component's or the host's name
  unsigned long fSeed = 0;
  std::string fNotRun = "not run";  // the word for what was not run
  int fSignal = 0;                  // what interrupted the run
  // What a user needs to repeat the run, for JSON: names and values.
  std::vector<std::pair<std::string, std::string>> fFacts;
  std::vector<Result> fResults;

  std::size_t Count(Outcome outcome) const;
};

// A table: one line for each test, the reason of a failure below it, a summary at the end.
void PrintText(std::ostream& out, const Results& results);
// One JSON object.
void PrintJson(std::ostream& out, const Results& results);

// The names and descriptions alone.
void ListText(std::ostream& out, const Results& results);
void ListJson(std::ostream& out, const Results& results);

}  // namespace KAPCheck
