// SPDX-License-Identifier: MIT

#include "commands/Command.h"
#include "commands/declarations/ManualPage.h"

namespace PosUtil {

namespace {

class ManualCommand final : public Command {
 public:
  ManualCommand() : Command(92, "manual", "Prints the manual page of this program") {}

  void Declare(Options& options) override {
    fProgram = &options.Program();
    options.Footer(
        "The page describes every command. Its format is that of man.\n\n"
        "Example:\n"
        "  posutil manual | man -l -");
  }

  bool DescribesAll() const override { return true; }

  ExitStatus Run(Session& session) override {
    session.Out().Put(ManualPage(DeclarationsOf(*fProgram)));
    return kExitSuccess;
  }

 private:
  const CLI::App* fProgram = nullptr;
} gManualCommand;

}  // namespace

}  // namespace PosUtil
