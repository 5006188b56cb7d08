// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace PosUtil {

// An option or a positional argument, as its declaration describes it.
struct DeclaredOption {
  std::vector<std::string> fNames;    // with dashes; of a positional argument its name alone
  std::string fDescription;           // without a full stop
  std::string fValue;                 // what follows an option, such as FILE; empty for a flag
  std::vector<std::string> fChoices;  // the fixed values
  bool fIsRequired = false;
  bool fIsRepeated = false;       // takes any number of values
  bool fIsValueOptional = false;  // and then follows a "="
  bool fTakesFile = false;
};

struct DeclaredCommand {
  std::string fName;
  std::string fDescription;
  std::vector<DeclaredOption> fOptions;  // without those of every command
  std::vector<DeclaredOption> fArguments;
  std::string fFooter;
};

// All that posutil understands. Completions, the manual page and the messages about wrong usage
// come from it, so they cover a new option or command without a change.
struct Declarations {
  std::vector<DeclaredOption> fOptions;  // of every command
  std::vector<DeclaredCommand> fCommands;
};

// Marks an option or argument as the name of a file, for DeclaredOption::fTakesFile.
void MarkFile(CLI::Option& option);

std::string Joined(const std::vector<std::string>& words, const std::string& between);

// The description without what follows a semicolon or a colon, such as the default.
std::string Brief(const DeclaredOption& option);

DeclaredOption DeclarationOf(const CLI::Option& option);
// `options` are those of the program.
Declarations DeclarationsOf(const CLI::App& options);

}  // namespace PosUtil
