#pragma once

#include <memory>
#include <string>

#include "base/Failure.h"
#include "commands/verdicts/VerdictPrinter.h"
#include "program/Session.h"

namespace CLI {
class App;
}

namespace PosUtil {

// The options of a command that checks files.
class VerdictOptions {
 public:
  // Declares --format and --quiet.
  void Declare(CLI::App& options);

  Messages WantedMessages() const { return fIsQuiet ? Messages::kUnwanted : Messages::kWanted; }
  // Null with --quiet.
  std::unique_ptr<VerdictPrinter> NewPrinter(Output& out) const;

 private:
  std::string fForm = VerdictPrinter::kText;
  bool fIsQuiet = false;
};

// Checks files one by one, prints the verdicts and counts them. If a file cannot be checked, a
// message goes to standard error, and the checks of the other files continue.
class VerdictReport {
 public:
  VerdictReport(const VerdictOptions& options, Session& session);

  // `makeVerdict` checks the file `name`; if it throws Failure, the file counts as unchecked.
  template <class MakeVerdict>
  void Add(const std::string& name, MakeVerdict makeVerdict) {
    Verdict verdict;
    try {
      verdict = makeVerdict();
    } catch (const PlacedFailure& error) {
      fSession.ComplainPlainly(error.what());
      return CountUnchecked(name, error);
    } catch (const Failure& failure) {
      fSession.Complain(failure.what());
      return CountUnchecked(name, failure);
    }
    Count(name, verdict);
  }

  // Prints the counts. Returns kExitFailure if a file could not be checked, else kExitNegative if
  // one is not valid.
  ExitStatus Finish();

 private:
  void Count(const std::string& name, const Verdict& verdict);
  void CountUnchecked(const std::string& name, const Failure& failure);

  Session& fSession;
  const std::unique_ptr<VerdictPrinter> fPrinter;
  VerdictCounts fCounts;
};

}  // namespace PosUtil
