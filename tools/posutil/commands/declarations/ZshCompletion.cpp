// SPDX-License-Identifier: MIT
#include "commands/declarations/Completion.h"

namespace PosUtil {

namespace {

// The file works both as an autoloaded function, which runs when it is first needed, and sourced.
constexpr char kEnd[] = R"(}
if [[ $funcstack[1] == _posutil ]]; then
  _posutil "$@"
else
  compdef _posutil posutil
fi
)";

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

// zsh reads colons and brackets in the description of an option or argument as its own.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == ':' || c == '[' || c == ']' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string Action(const DeclaredOption& option) {
  if (option.fTakesFile) return "_files";
  return option.fChoices.empty() ? " " : "(" + Joined(option.fChoices, " ") + ")";
}

std::string OptionLines(const std::vector<DeclaredOption>& options) {
  std::string lines;
  for (const DeclaredOption& option : options) {
    const std::string text = "[" + Escaped(Brief(option)) + "]";
    const std::string value = Escaped(option.fValue) + ":" + Action(option);
    for (const std::string& name : option.fNames) {
      std::string line = name + text;
      if (option.fIsValueOptional)
        line = name + "=-" + text + "::" + value;
      else if (!option.fValue.empty())
        line = name + (name.starts_with("--") ? "=" : "+") + text + ":" + value;
      lines += " \\\n        " + Quoted(line);
    }
  }
  return lines;
}

std::string ArgumentLines(const std::vector<DeclaredOption>& arguments) {
  std::string lines;
  std::size_t number = 0;
  for (const DeclaredOption& argument : arguments) {
    const std::string place = argument.fIsRepeated ? "*" : std::to_string(++number);
    lines += " \\\n        " +
             Quoted(place + ":" + Escaped(argument.fNames.front()) + ":" + Action(argument));
  }
  return lines;
}

}  // namespace

std::string ZshCompletion(const Declarations& declarations) {
  const std::string common = OptionLines(declarations.fOptions);
  std::string list;
  std::string cases;
  for (const DeclaredCommand& command : declarations.fCommands) {
    list += "        " + Quoted(Escaped(command.fName) + ":" + command.fDescription) + "\n";
    cases += "      " + command.fName + ")\n      _arguments -S" + OptionLines(command.fOptions) +
             common + ArgumentLines(command.fArguments) + "\n      ;;\n";
  }
  return "#compdef posutil\n# SPDX-License-Identifier: MIT\n_posutil() {\n"
         "  local curcontext=$curcontext state line\n  local -A opt_args\n"
         "  _arguments -C -S" +
         common + " \\\n        '1:command:->command' \\\n        '*::argument:->argument'\n" +
         "  case $state in\n    command)\n      local -a commands=(\n" + list +
         "      )\n      _describe -t commands command commands\n      ;;\n" +
         "    argument)\n      case $words[1] in\n" + cases + "      esac\n      ;;\n  esac\n" +
         kEnd;
}

}  // namespace PosUtil
