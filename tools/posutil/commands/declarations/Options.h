// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace PosUtil {

// An option or a positional argument of the command line that has been declared. A handle: it is
// valid as long as the parser.
class Option {
 public:
  Option() = default;
  explicit Option(CLI::Option* option) : fOption(option) {}

  Option& Required();
  // What help shows in place of the value, such as FILE or N|tab.
  Option& ShownAs(const std::string& value);
  // Accepts only these values, and shows them.
  Option& OneOf(const std::vector<std::string>& choices);
  // The value is the name of a file, which a shell can complete.
  Option& File();
  // Rejects the other option next to this one.
  Option& NotWith(const Option& other);
  // Rejects a value for which `check` returns a text: what the value is instead.
  Option& Check(std::string (*check)(const std::string& value));

  // Returns whether the option was given; for the time after the arguments are parsed.
  bool IsGiven() const;

 private:
  CLI::Option* fOption = nullptr;
};

// Declares the options and positional arguments of a command, or of the program. A target must
// outlive the parser; it keeps its value if the option is not given.
//
// Nothing else here needs the header of the parser, which takes two seconds to compile.
class Options {
 public:
  explicit Options(CLI::App& app) : fApp(app) {}

  // Required positional arguments: one, and one or more.
  Option Argument(const char* name, std::string& target, const std::string& description);
  Option Arguments(const char* name, std::vector<std::string>& target,
                   const std::string& description);

  // Names have dashes: "--jobs,-j".
  Option Text(const char* name, std::string& target, const std::string& description);
  Option Number(const char* name, std::size_t& target, const std::string& description);
  Option Flag(const char* name, bool& target, const std::string& description);
  // A flag that may have a value, after "=" only. Without one the target becomes "true".
  Option FlagWithText(const char* name, std::string& target, const std::string& description);

  // The end of the help.
  void Footer(const std::string& text);

  // All options and commands, for DeclarationsOf. This must be a command.
  const CLI::App& Program() const;

 private:
  CLI::App& fApp;
};

}  // namespace PosUtil
