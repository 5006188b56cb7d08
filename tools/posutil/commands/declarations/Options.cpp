// SPDX-License-Identifier: MIT
#include "commands/declarations/Options.h"

#include <CLI/CLI.hpp>

#include "commands/declarations/Declarations.h"
#include "commands/declarations/LiteralArguments.h"

namespace PosUtil {

Option& Option::Required() {
  fOption->required();
  return *this;
}

Option& Option::ShownAs(const std::string& value) {
  fOption->option_text(value);
  return *this;
}

Option& Option::OneOf(const std::vector<std::string>& choices) {
  fOption->check(CLI::IsMember(choices));
  return ShownAs(Joined(choices, "|"));
}

Option& Option::File() {
  MarkFile(*fOption);
  return *this;
}

Option& Option::NotWith(const Option& other) {
  fOption->excludes(other.fOption);
  return *this;
}

Option& Option::Check(std::string (*check)(const std::string& value)) {
  fOption->check(check);
  return *this;
}

bool Option::IsGiven() const { return fOption->count() > 0; }

namespace {

// What Command::Prepare has hidden from the parser shows again.
template <class Target>
CLI::Option* AddOption(CLI::App& app, const char* name, Target& target,
                       const std::string& description) {
  CLI::Option* const option = app.add_option(name, target, description);
  return option->transform([](const std::string& value) { return ShowArgument(value); });
}

}  // namespace

Option Options::Argument(const char* name, std::string& target, const std::string& description) {
  return Option(AddOption(fApp, name, target, description)).Required().ShownAs(" ");
}

Option Options::Arguments(const char* name, std::vector<std::string>& target,
                          const std::string& description) {
  return Option(AddOption(fApp, name, target, description)).Required().ShownAs("...");
}

Option Options::Text(const char* name, std::string& target, const std::string& description) {
  return Option(AddOption(fApp, name, target, description));
}

Option Options::Number(const char* name, std::size_t& target, const std::string& description) {
  // The parser reads -1 as the largest number.
  return Option(fApp.add_option(name, target, description)).Check([](const std::string& text) {
    const bool isNegative = text.size() > 1 && text[0] == '-' &&
                            text.find_first_not_of("0123456789", 1) == std::string::npos;
    return std::string(isNegative ? "below 0" : "");
  });
}

Option Options::Flag(const char* name, bool& target, const std::string& description) {
  return Option(fApp.add_flag(name, target, description));
}

Option Options::FlagWithText(const char* name, std::string& target,
                             const std::string& description) {
  return Option(fApp.add_flag(name, target, description));
}

void Options::Footer(const std::string& text) { fApp.footer(text); }

const CLI::App& Options::Program() const { return *fApp.get_parent(); }

}  // namespace PosUtil
