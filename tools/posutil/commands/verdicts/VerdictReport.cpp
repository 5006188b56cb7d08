#include "commands/verdicts/VerdictReport.h"

#include <CLI/CLI.hpp>

namespace PosUtil {

void VerdictOptions::Declare(CLI::App& options) {
  options.add_option("--format", fForm, "Format of the results; default: text")
      ->check(CLI::IsMember({VerdictPrinter::kText, VerdictPrinter::kJson}))
      ->option_text("text|json");
  options.add_flag("--quiet,-q", fIsQuiet, "Prints no results; only the exit status");
}

std::unique_ptr<VerdictPrinter> VerdictOptions::NewPrinter(Output& out) const {
  return fIsQuiet ? nullptr : VerdictPrinter::New(fForm, out);
}

VerdictReport::VerdictReport(const VerdictOptions& options, Session& session)
    : fSession(session), fPrinter(options.NewPrinter(session.Out())) {
  if (fPrinter) fPrinter->Begin();
}

ExitStatus VerdictReport::Finish() {
  if (fPrinter) fPrinter->End(fCounts);
  if (fCounts.fUnchecked > 0) return kExitFailure;
  return fCounts.fInvalid > 0 ? kExitNegative : kExitSuccess;
}

void VerdictReport::Count(const std::string& name, const Verdict& verdict) {
  ++(verdict.fIsValid ? fCounts.fValid : fCounts.fInvalid);
  fCounts.fMessages += verdict.fMessages.size();
  if (fPrinter) fPrinter->Print(name, verdict);
}

void VerdictReport::CountUnchecked(const std::string& name, const Failure& failure) {
  ++fCounts.fUnchecked;
  if (fPrinter) fPrinter->PrintUnchecked(name, failure.what());
}

}  // namespace PosUtil
