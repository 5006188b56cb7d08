// SPDX-License-Identifier: MIT
#include "commands/verdicts/VerdictReport.h"

namespace PosUtil {

void VerdictOptions::Declare(Options& options) {
  options.Text("--format", fForm, "Format of the results; default: text")
      .OneOf({VerdictPrinter::kText, VerdictPrinter::kJson});
  options.Number("--max-errors", fMaxErrors, "The most messages to print, 0 for all; default: 100")
      .ShownAs("N");
  options.Flag("--all-branches", fShowsAllBranches,
               "Explains every alternative of a union, not only the closest one");
  options.Flag("--quiet,-q", fIsQuiet, "Prints no results; only the exit status");
}

std::unique_ptr<VerdictPrinter> VerdictOptions::NewPrinter(Session& session) const {
  return fIsQuiet ? nullptr : VerdictPrinter::New(fForm, session.OutStyle(), session.Out());
}

void VerdictOptions::PrintFailure(const std::string& reason, Session& session) const {
  if (const auto printer = NewPrinter(session)) printer->PrintFailure(reason);
  session.Out().Flush();
}

CheckOptions VerdictOptions::Check() const {
  return {fIsQuiet ? Messages::kUnwanted : Messages::kWanted,
          fShowsAllBranches ? Branches::kAll : Branches::kClosest, MaxMessages()};
}

VerdictReport::VerdictReport(const VerdictOptions& options, Session& session)
    : VerdictReport(options, session, options.NewPrinter(session)) {}

VerdictReport::VerdictReport(const VerdictOptions& options, Session& session,
                             std::unique_ptr<VerdictPrinter> printer)
    : fSession(session), fCheck(options.Check()), fPrinter(std::move(printer)) {
  if (fPrinter) fPrinter->Begin();
}

CheckOptions VerdictReport::Check() const {
  CheckOptions options = fCheck;
  options.fMaxMessages -= fCounts.fPrinted;
  return options;
}

ExitStatus VerdictReport::Finish() {
  if (fPrinter) fPrinter->End(fCounts);
  if (fCounts.fUnchecked > 0) return kExitFailure;
  return fCounts.fInvalid > 0 ? kExitNegative : kExitSuccess;
}

void VerdictReport::Count(const CheckedName& name, Verdict verdict) {
  const std::size_t limit = Check().fMaxMessages;
  if (verdict.fMessages.size() > limit) {  // the process that checked does not know of the others
    verdict.fUnshown += verdict.fMessages.size() - limit;
    verdict.fMessages.resize(limit);
  }
  ++(verdict.fIsValid ? fCounts.fValid : fCounts.fInvalid);
  fCounts.fMessages += verdict.fMessages.size() + verdict.fUnshown;
  if (!fPrinter) return;
  fCounts.fPrinted += verdict.fMessages.size();
  fPrinter->Print(name, verdict);
}

void VerdictReport::CountUnchecked(const CheckedName& name, const std::string& reason) {
  ++fCounts.fUnchecked;
  if (fPrinter) fPrinter->PrintUnchecked(name, reason);
}

}  // namespace PosUtil
