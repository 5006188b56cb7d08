// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "base/SyntaxError.h"
#include "commands/declarations/Options.h"
#include "commands/verdicts/Schema.h"
#include "commands/verdicts/VerdictPrinter.h"
#include "program/Session.h"

namespace PosUtil {

// The options of a command that checks files.
class VerdictOptions {
 public:
  // Declares --format, --quiet, --max-errors and --all-branches.
  void Declare(Options& options);

  CheckOptions Check() const;
  // Whether messages need the text of what is checked.
  Text WantedText() const { return fIsQuiet ? Text::kDropped : Text::kKept; }
  // The most messages to print.
  std::size_t MaxMessages() const { return fMaxErrors == 0 ? SIZE_MAX : fMaxErrors; }
  // Null with --quiet.
  std::unique_ptr<VerdictPrinter> NewPrinter(Session& session) const;
  // Prints that nothing can be checked, where the form has a place for it.
  void PrintFailure(const std::string& reason, Session& session) const;

 private:
  std::string fForm = VerdictPrinter::kText;
  std::size_t fMaxErrors = 100;
  bool fIsQuiet = false;
  bool fShowsAllBranches = false;
};

// Checks documents one by one, prints the verdicts and counts them. If a document cannot be
// checked, a message goes to standard error, and the checks of the others continue.
class VerdictReport {
 public:
  VerdictReport(const VerdictOptions& options, Session& session);
  // Passes the verdicts to this printer.
  VerdictReport(const VerdictOptions& options, Session& session,
                std::unique_ptr<VerdictPrinter> printer);

  // What a check does. The limit of the messages is what is left of it.
  CheckOptions Check() const;

  // `makeVerdict` checks a document, or returns nothing if there is none; if it throws Failure, the
  // document counts as unchecked. Returns whether the input may have another document.
  template <class MakeVerdict>
  bool Add(const CheckedName& name, MakeVerdict makeVerdict) {
    std::optional<Verdict> verdict;
    try {
      verdict = makeVerdict();
    } catch (const PlacedFailure& error) {
      fSession.ComplainPlainly(error.what());
      CountUnchecked(name, error.what());
      // An input is of no use after another error in it.
      return dynamic_cast<const LossFailure*>(&error) || dynamic_cast<const UnheldValue*>(&error);
    } catch (const Failure& failure) {
      fSession.Complain(failure.what());
      CountUnchecked(name, failure.what());
      return false;
    }
    if (verdict) Count(name, std::move(*verdict));
    return verdict.has_value();
  }

  // Count and print a verdict, or that there is none. Messages beyond the limit only count.
  void Count(const CheckedName& name, Verdict verdict);
  void CountUnchecked(const CheckedName& name, const std::string& reason);

  // Prints the counts. Returns kExitFailure if a document could not be checked, else kExitNegative
  // if one is not valid.
  ExitStatus Finish();

 private:
  Session& fSession;
  const CheckOptions fCheck;
  const std::unique_ptr<VerdictPrinter> fPrinter;
  VerdictCounts fCounts;
};

}  // namespace PosUtil
