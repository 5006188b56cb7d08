// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include "commands/Command.h"
#include "commands/declarations/Completion.h"

namespace PosUtil {

namespace {

constexpr struct {
  const char* fName;
  std::string (*fScript)(const Declarations& declarations);
} kShells[] = {{"bash", &BashCompletion}, {"zsh", &ZshCompletion}, {"fish", &FishCompletion}};

class CompletionCommand final : public Command {
 public:
  CompletionCommand()
      : Command(91, "completion", "Prints a script that completes arguments in a shell") {}

  void Declare(Options& options) override {
    fProgram = &options.Program();
    std::vector<std::string> shells;
    for (const auto& [name, script] : kShells) shells.emplace_back(name);
    options.Argument("SHELL", fShell, "The shell").OneOf(shells);
    options.Footer(
        "An installed posutil has brought the scripts along. Without an installation, let the\n"
        "shell read one when it starts; zsh after compinit.\n\n"
        "Examples:\n"
        "  posutil completion bash > ~/.local/share/bash-completion/completions/posutil\n"
        "  posutil completion fish > ~/.config/fish/completions/posutil.fish\n"
        "  posutil completion zsh > ~/.zfunc/_posutil");
  }

  bool DescribesAll() const override { return true; }

  ExitStatus Run(Session& session) override {
    for (const auto& [name, script] : kShells) {
      if (fShell == name) session.Out().Put(script(DeclarationsOf(*fProgram)));
    }
    return kExitSuccess;
  }

 private:
  const CLI::App* fProgram = nullptr;
  std::string fShell;
} gCompletionCommand;

}  // namespace

}  // namespace PosUtil
