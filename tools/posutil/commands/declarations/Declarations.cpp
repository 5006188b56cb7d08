// SPDX-License-Identifier: MIT
#include "commands/declarations/Declarations.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

namespace PosUtil {

namespace {

// No help shows it: each option has a text of its own.
constexpr char kFileType[] = "FILE";

bool IsWord(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
  });
}

// From "N|tab", only "tab": a word in capitals is a placeholder.
std::vector<std::string> ChoicesIn(std::string_view values) {
  std::vector<std::string> choices;
  if (values.find('|') == std::string_view::npos) return choices;
  while (!values.empty()) {
    const std::string value(values.substr(0, values.find('|')));
    values.remove_prefix(std::min(value.size() + 1, values.size()));
    if (IsWord(value)) choices.push_back(value);
  }
  return choices;
}

// The text of an option's value says what it is: FILE, text|json, "[=SUFFIX]".
std::string ValueIn(const CLI::Option& option) {
  std::string text = option.get_option_text();
  std::erase_if(text, [](char c) { return c == ' ' || c == '=' || c == '[' || c == ']'; });
  return text;
}

void Declare(const CLI::App& app, std::vector<DeclaredOption>& options,
             std::vector<DeclaredOption>& arguments) {
  for (const CLI::Option* option : app.get_options()) {
    (option->get_positional() ? arguments : options).push_back(DeclarationOf(*option));
  }
}

}  // namespace

void MarkFile(CLI::Option& option) { option.type_name(kFileType); }

// Not by a string stream, as CLI11 does it: that takes a lack of memory for the end of the text.
std::string Joined(const std::vector<std::string>& words, const std::string& between) {
  std::string joined;
  for (const std::string& word : words) {
    if (&word != words.data()) joined += between;
    joined += word;
  }
  return joined;
}

DeclaredOption DeclarationOf(const CLI::Option& option) {
  DeclaredOption declared;
  declared.fDescription = option.get_description();
  declared.fIsRequired = option.get_required();
  declared.fChoices = ChoicesIn(option.get_option_text());
  declared.fTakesFile = option.get_type_name() == kFileType;
  if (option.get_positional()) {
    declared.fNames.push_back(option.get_name(true));
    declared.fIsRepeated = option.get_expected_max() > 1;
    return declared;
  }
  for (const std::string& name : option.get_lnames()) declared.fNames.push_back("--" + name);
  for (const std::string& name : option.get_snames()) declared.fNames.push_back("-" + name);
  declared.fValue = ValueIn(option);
  declared.fIsValueOptional = !declared.fValue.empty() && option.get_expected_min() == 0;
  return declared;
}

std::string Brief(const DeclaredOption& option) {
  return option.fDescription.substr(0, option.fDescription.find_first_of(";:"));
}

Declarations DeclarationsOf(const CLI::App& options) {
  Declarations declarations;
  std::vector<DeclaredOption> none;
  Declare(options, declarations.fOptions, none);
  for (const CLI::App* app : options.get_subcommands([](const CLI::App*) { return true; })) {
    DeclaredCommand command = {app->get_name(), app->get_description(), {}, {}, app->get_footer()};
    Declare(*app, command.fOptions, command.fArguments);
    std::erase_if(command.fOptions, [&](const DeclaredOption& option) {
      return std::any_of(
          declarations.fOptions.begin(), declarations.fOptions.end(),
          [&](const DeclaredOption& common) { return common.fNames == option.fNames; });
    });
    declarations.fCommands.push_back(std::move(command));
  }
  return declarations;
}

}  // namespace PosUtil
