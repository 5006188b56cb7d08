#pragma once

#include <memory>
#include <string>

#include "base/SyntaxError.h"
#include "commands/verdicts/VerdictPrinter.h"
#include "program/Session.h"

namespace CLI {
class App;
}

namespace PosUtil {

// How a command that checks files prints what the checks come to.
class VerdictOptions {
 public:
  // --format and --quiet.
  void Declare(CLI::App& options);

  Messages WantedMessages() const { return fIsQuiet ? Messages::kUnwanted : Messages::kWanted; }
  // Null when nothing is to be printed.
  std::unique_ptr<VerdictPrinter> NewPrinter(Output& out) const;

 private:
  std::string fForm = VerdictPrinter::kText;
  bool fIsQuiet = false;
};

// Checks files one after the other, prints what each check comes to, and counts. A file that cannot be checked is told
// of on standard error; the next ones are checked all the same.
class VerdictReport {
 public:
  VerdictReport(const VerdictOptions& options, Session& session);

  // `makeVerdict` checks the file of that name. A Failure of it is one of the file.
  template <class MakeVerdict>
  void Add(const std::string& name, MakeVerdict makeVerdict) {
    Verdict verdict;
    try {
      verdict = makeVerdict();
    } catch (const SyntaxError& error) {
      fSession.ComplainPlainly(error.what());
      return CountUnchecked(name, error);
    } catch (const Failure& failure) {
      fSession.Complain(failure.what());
      return CountUnchecked(name, failure);
    }
    Count(name, verdict);
  }

  // Prints the counts. The worst of all files: kExitFailure when one could not be checked, else kExitNegative when one
  // is not valid.
  ExitStatus Finish();

 private:
  void Count(const std::string& name, const Verdict& verdict);
  void CountUnchecked(const std::string& name, const Failure& failure);

  Session& fSession;
  const std::unique_ptr<VerdictPrinter> fPrinter;
  VerdictCounts fCounts;
};

}  // namespace PosUtil
