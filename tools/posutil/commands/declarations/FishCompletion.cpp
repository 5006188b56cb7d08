// SPDX-License-Identifier: MIT
#include "commands/declarations/Completion.h"

namespace PosUtil {

namespace {

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

std::string OptionLine(const std::string& start, const DeclaredOption& option) {
  std::string line = start;
  for (const std::string& name : option.fNames) {
    line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  if (!option.fValue.empty() && !option.fIsValueOptional) {
    line += option.fTakesFile ? " -r -F" : " -x";
  }
  if (!option.fChoices.empty()) line += " -a " + Quoted(Joined(option.fChoices, " "));
  return line + " -d " + Quoted(Brief(option)) + "\n";
}

}  // namespace

std::string FishCompletion(const Declarations& declarations) {
  const std::string start = "complete -c posutil";
  std::string script = "# SPDX-License-Identifier: MIT\n";
  for (const DeclaredOption& option : declarations.fOptions) script += OptionLine(start, option);
  for (const DeclaredCommand& command : declarations.fCommands) {
    script += start + " -n __fish_use_subcommand -f -a " + command.fName + " -d " +
              Quoted(command.fDescription) + "\n";
    const std::string inside = start + " -n '__fish_seen_subcommand_from " + command.fName + "'";
    bool takesFiles = false;
    for (const DeclaredOption& option : command.fOptions) script += OptionLine(inside, option);
    for (const DeclaredOption& argument : command.fArguments) {
      takesFiles |= argument.fTakesFile;
      if (!argument.fChoices.empty()) {
        script += inside + " -a " + Quoted(Joined(argument.fChoices, " ")) + "\n";
      }
    }
    if (!takesFiles) script += inside + " -f\n";
  }
  return script;
}

}  // namespace PosUtil
