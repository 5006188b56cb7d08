// SPDX-License-Identifier: MIT
#include "commands/declarations/Completion.h"

namespace PosUtil {

namespace {

// Bash splits a word at each "=". The value of an option is not a command. An empty COMPREPLY
// stands for names of files (-o default).
constexpr char kStart[] = R"(# shellcheck shell=bash
# SPDX-License-Identifier: MIT
_posutil() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' words='' word previous=''
  if [[ $current == '=' ]]; then
    current=''
  elif [[ $before == '=' ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $previous:$word in
)";

constexpr char kEnd[] = R"(  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -o default -o bashdefault -F _posutil posutil
)";

// A branch of a case about the command and the word before: the values of an option. Values that
// are not known here complete to nothing or to names of files.
std::string ValueBranch(const std::string& command, const DeclaredOption& option) {
  if (option.fValue.empty() || option.fIsValueOptional) return "";
  std::vector<std::string> patterns;
  for (const std::string& name : option.fNames) patterns.push_back((command + ":").append(name));
  return "    " + Joined(patterns, " | ") + ") words='" + Joined(option.fChoices, " ") + "' ;;\n";
}

// The branch of the search for the command: skips the values of options.
std::string SkippingBranch(const std::vector<DeclaredOption>& options) {
  std::string patterns = "=:*";
  for (const DeclaredOption& option : options) {
    if (option.fValue.empty()) continue;
    for (const std::string& name : option.fNames) patterns += " | " + name + ":*";
  }
  return "      " + patterns + ") ;;\n";
}

std::string Branch(const std::string& pattern, const std::vector<std::string>& words) {
  return words.empty() ? "" : "        " + pattern + ") words='" + Joined(words, " ") + "' ;;\n";
}

std::vector<std::string> Names(const std::vector<DeclaredOption>& options) {
  std::vector<std::string> names;
  for (const DeclaredOption& option : options) {
    names.insert(names.end(), option.fNames.begin(), option.fNames.end());
  }
  return names;
}

std::vector<std::string> Choices(const std::vector<DeclaredOption>& arguments) {
  std::vector<std::string> choices;
  for (const DeclaredOption& argument : arguments) {
    choices.insert(choices.end(), argument.fChoices.begin(), argument.fChoices.end());
  }
  return choices;
}

}  // namespace

std::string BashCompletion(const Declarations& declarations) {
  std::vector<std::string> commands;
  std::string values;
  std::string options;
  std::string arguments;
  for (const DeclaredCommand& command : declarations.fCommands) {
    commands.push_back(command.fName);
    for (const DeclaredOption& option : command.fOptions) {
      values += ValueBranch(command.fName, option);
    }
    options += Branch(command.fName + ":-*", Names(command.fOptions));
    arguments +=
        Branch(command.fName + ":[!-]* | " + command.fName + ":", Choices(command.fArguments));
  }
  for (const DeclaredOption& option : declarations.fOptions) values += ValueBranch("*", option);
  return kStart + SkippingBranch(declarations.fOptions) + "      *:" + Joined(commands, " | *:") +
         ")\n        command=$word\n"
         "        break\n        ;;\n    esac\n    previous=$word\n  done\n"
         "  case $command:$before in\n" +
         values + "    *)\n      case $command:$current in\n" + options + arguments +
         Branch(":[!-]* | :", commands) + "      esac\n" +
         "      [[ $current != -* ]] || words+=' " + Joined(Names(declarations.fOptions), " ") +
         "'\n      ;;\n  esac\n" + kEnd;
}

}  // namespace PosUtil
