// SPDX-License-Identifier: MIT
#include "commands/changes/ChangedDocument.h"

#include "base/Failure.h"
#include "base/Printable.h"
#include "commands/declarations/LiteralArguments.h"
#include "files/Destination.h"

namespace PosUtil {

void ChangedDocument::Declare(Options& options) {
  fDocument.Declare(options);
  fDocument.DeclareAll(options);
  fDocument.DeclareLayout(options);
  options
      .FlagWithText(
          "--in-place", fInPlace,
          "Replaces FILE by the result; with SUFFIX, keeps the old file under its name and "
          "SUFFIX")
      .ShownAs("[=SUFFIX]");
}

void ChangedDocument::Prepare(std::vector<std::string>& arguments) {
  HideValueOfFlag(arguments, "--in-place");
}

std::string ChangedDocument::Suffix() const { return HasSuffix() ? ShowArgument(fInPlace) : ""; }

void ChangedDocument::Begin(Session& session) const {
  fDocument.SetLoss(session, IsInPlace() ? LossMode::kError : LossMode::kWarn);
  if (IsInPlace() && IsStandardInput()) {
    throw Failure("--in-place needs a file, not standard input", kExitUsage);
  }
  if (HasSuffix() && Suffix().empty()) {
    throw Failure("the suffix of --in-place is empty; --in-place alone keeps no old file",
                  kExitUsage);
  }
  if (Suffix().find('/') != std::string::npos) {
    throw Failure("the suffix of --in-place is not a part of a file name", kExitUsage);
  }
  fDocument.Format();  // wrong usage ends the command before it reads anything
}

void ChangedDocument::Run(Session& session, const DocumentArgument::Change& change) const {
  if (!IsInPlace()) return Write(session, session.Out(), session.OutStyle(), change);
  Destination destination(fDocument.File());
  if (!destination.Replaces()) {
    throw Failure(Printable(Name()) + ": --in-place needs a regular file", kExitUsage);
  }
  destination.KeepOldAs(Suffix());
  destination.RequireOld();
  Write(session, destination.Out(), Style(), change);
  session.CheckReports();  // a late report leaves the file unchanged
  destination.Commit();
}

void ChangedDocument::Write(Session& session, Output& out, Style style,
                            const DocumentArgument::Change& change) const {
  const Writer& writer = *FindFormat<Writer>(fDocument.Format().kName);
  const auto changeOne = [&](KAP_T_MT::CPOSObject& document, const std::string& name) {
    try {
      change(document, name);
    } catch (const Failure&) {
      session.TheLibrary().CheckReports(name);  // a report is the cause of the failure
      throw;
    }
    session.TheLibrary().CheckReports(name);
    if (document.IsNull()) {
      const bool keepsNull = session.Loss() == LossMode::kKeep;
      throw Failure(Printable(name) + (keepsNull ? ": nothing is left"
                                                 : ": the result is null; --loss=keep keeps it"));
    }
  };
  fDocument.Write(writer, writer.kEnd, style, session, out, changeOne);
}

}  // namespace PosUtil
