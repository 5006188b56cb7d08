// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include "commands/Command.h"
#include "commands/changes/JsonPatch.h"
#include "commands/changes/PatchArgument.h"

namespace PosUtil {

namespace {

class PatchCommand final : public Command {
 public:
  PatchCommand() : Command(9, "patch", "Applies a JSON Patch to a document") {}

  void Declare(Options& options) override {
    fPatch.Declare(options, "The operations, as diff --format json prints them");
    options.Footer(
        "Writes the document after all operations of the patch (a JSON Patch, RFC 6902), in the\n"
        "format and layout that it has. If an operation fails, nothing is written: exit status 1\n"
        "if it does not fit the document, 3 if it is malformed. With --in-place, nothing may be\n"
        "lost: --loss=error is the default then.\n\n"
        "Examples:\n"
        "  posutil patch --in-place settings.json patch.json\n"
        "  posutil diff --format json old.json new.json | posutil patch old.json -");
  }

  void Prepare(std::vector<std::string>& arguments) const override {
    ChangedDocument::Prepare(arguments);
  }

  ExitStatus Run(Session& session) override {
    fPatch.Run(session, ApplyJsonPatch);
    return kExitSuccess;
  }

 private:
  PatchArgument fPatch;
} gPatchCommand;

}  // namespace

}  // namespace PosUtil
