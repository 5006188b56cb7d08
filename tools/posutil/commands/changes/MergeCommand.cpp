// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include "commands/Command.h"
#include "commands/changes/MergePatch.h"
#include "commands/changes/PatchArgument.h"

namespace PosUtil {

namespace {

class MergeCommand final : public Command {
 public:
  MergeCommand() : Command(7, "merge", "Merges a patch into a document") {}

  void Declare(Options& options) override {
    fPatch.Declare(options, "A document with the members to set");
    options.Footer(
        "Writes the document merged with the patch (a JSON Merge Patch, RFC 7396), in the format\n"
        "and layout that it has: each member of a dictionary in the patch replaces that of the\n"
        "document, dictionaries are merged in turn, and null removes a member. The patch may have\n"
        "another format; only JSON has null. With --in-place, nothing else may be lost:\n"
        "--loss=error is the default then.\n\n"
        "Example:\n"
        "  posutil merge --in-place settings.json changes.json");
  }

  void Prepare(std::vector<std::string>& arguments) const override {
    ChangedDocument::Prepare(arguments);
  }

  ExitStatus Run(Session& session) override {
    fPatch.Run(session, ApplyMergePatch);
    return kExitSuccess;
  }

 private:
  PatchArgument fPatch;
} gMergeCommand;

}  // namespace

}  // namespace PosUtil
