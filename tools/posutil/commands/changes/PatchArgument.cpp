// SPDX-License-Identifier: MIT
#include "commands/changes/PatchArgument.h"

#include "base/Failure.h"
#include "base/Printable.h"

namespace PosUtil {

void PatchArgument::Declare(Options& options, const char* description) {
  fDocument.Declare(options);
  options.Argument("PATCH", fPatch, description).File();
  DeclareFrom(options, "--patch-from", fPatchFormat, "PATCH");
}

void PatchArgument::Run(Session& session, void (*apply)(KAP_T_MT::CPOSObject&, Change&)) const {
  if (fDocument.IsStandardInput() && fPatch == "-") {
    throw Failure("FILE and PATCH cannot both be standard input", kExitUsage);
  }
  fDocument.Begin(session);
  Change patch(FormatOfInput(fPatchFormat, fPatch, "--patch-from"), fPatch, session);
  fDocument.Run(session, [&](KAP_T_MT::CPOSObject& document, const std::string& name) {
    try {
      apply(document, patch);
    } catch (const PlacedFailure&) {
      throw;  // it is about the patch
    } catch (const Failure& failure) {
      throw Failure(Printable(name) + ": " + failure.what(), failure.Status());
    }
    patch.ReportLosses();
  });
}

}  // namespace PosUtil
