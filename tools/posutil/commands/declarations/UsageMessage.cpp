// SPDX-License-Identifier: MIT
#include "commands/declarations/UsageMessage.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <vector>

#include "base/Closest.h"
#include "base/Printable.h"
#include "commands/declarations/Declarations.h"
#include "commands/declarations/LiteralArguments.h"

namespace PosUtil {

namespace {

std::string Quoted(const std::string& text) { return "\"" + Printable(text) + "\""; }

// "a, b or c", if the last word comes after "or".
std::string Sequence(std::vector<std::string> words, const std::string& beforeLast) {
  if (words.size() < 2) return Joined(words, "");
  const std::string last = words.back();
  words.pop_back();
  return Joined(words, ", ") + " " + beforeLast + " " + last;
}

std::string Hint(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string closest = Closest(word, candidates);
  return closest.empty() ? "" : "; did you mean " + closest + "?";
}

class Usage {
 public:
  explicit Usage(const CLI::App& program) : fProgram(program) {
    if (!program.get_subcommands().empty()) fChosen = program.get_subcommands().back();
  }

  std::string Message(const CLI::ParseError& error) const {
    return Reason(error) + "\nSee posutil " + (fChosen ? fChosen->get_name() + " " : "") +
           "--help.";
  }

 private:
  std::string Reason(const CLI::ParseError& error) const {
    // An unknown word explains most other errors, such as a missing argument.
    const std::vector<std::string> unknown = fProgram.remaining(true);
    if (!unknown.empty()) return Unknown(unknown);
    if (dynamic_cast<const CLI::RequiredError*>(&error)) {
      return fChosen ? "missing " + Missing() : "no command";
    }
    const CLI::Option* const option = OptionIn(error.what());
    return option ? AboutOption(*option, error) : std::string(error.what());
  }

  std::string Unknown(const std::vector<std::string>& words) const {
    if (!fChosen) {
      const auto command = std::find_if(words.begin(), words.end(), [](const std::string& word) {
        return !word.starts_with('-');
      });
      if (command != words.end()) {
        return "unknown command " + Quoted(*command) + Hint(*command, CommandNames());
      }
    }
    const std::string word = words.front().substr(0, words.front().find('='));
    if (!word.starts_with('-')) return "unexpected argument " + Quoted(ShowArgument(words.front()));
    const std::vector<std::string> names = OptionNames();
    if (std::find(names.begin(), names.end(), word) != names.end()) {
      return word + " belongs after the command";
    }
    return "unknown option " + Printable(word) + Hint(word, names);
  }

  // The options and arguments of the command that must be there and are not.
  std::string Missing() const {
    std::vector<std::string> missing;
    for (const CLI::Option* option : fChosen->get_options()) {
      if (!option->get_required() || option->count() > 0) continue;
      const DeclaredOption declared = DeclarationOf(*option);
      missing.push_back(declared.fNames.front() +
                        (declared.fValue.empty() ? "" : " " + declared.fValue));
    }
    return Sequence(missing, "and");
  }

  std::vector<std::string> CommandNames() const {
    std::vector<std::string> names;
    for (const DeclaredCommand& command : DeclarationsOf(fProgram).fCommands) {
      names.push_back(command.fName);
    }
    return names;
  }

  std::vector<const CLI::Option*> Options() const {
    std::vector<const CLI::Option*> options = fProgram.get_options();
    if (fChosen) {
      const CLI::App& chosen = *fChosen;
      const auto own = chosen.get_options();
      options.insert(options.begin(), own.begin(), own.end());
    }
    return options;
  }

  std::vector<std::string> OptionNames() const {
    std::vector<std::string> names;
    for (const CLI::Option* option : Options()) {
      if (option->get_positional()) continue;
      for (const std::string& name : DeclarationOf(*option).fNames) names.push_back(name);
    }
    return names;
  }

  // The option that a message of the parser names; only its text says which.
  const CLI::Option* OptionIn(const std::string& text) const {
    const CLI::Option* found = nullptr;
    std::size_t longest = 0;
    for (const CLI::Option* option : Options()) {
      const std::string name = DeclarationOf(*option).fNames.front();
      if (name.size() <= longest || text.find(name) == std::string::npos) continue;
      longest = name.size();
      found = option;
    }
    return found;
  }

  static std::string AboutOption(const CLI::Option& option, const CLI::ParseError& error) {
    const DeclaredOption declared = DeclarationOf(option);
    const std::string& name = declared.fNames.front();
    if (dynamic_cast<const CLI::ExcludesError*>(&error)) return Excluded(option, name);
    const std::vector<std::string> values = option.results();
    if (declared.fValue.empty() && !option.get_positional()) return name + " takes no value";
    if (values.empty() || values.back().empty()) {
      return name + " needs a value" + (declared.fValue.empty() ? "" : ": " + declared.fValue);
    }
    if (values.size() > 1 && !declared.fIsRepeated) return name + " is there more than once";
    std::string text = name + ": " + Quoted(values.front());
    if (dynamic_cast<const CLI::ConversionError*>(&error)) return text + " is not a number";
    const auto& choices = declared.fChoices;
    // The text of an argument holds its choices, too, but is not what follows it.
    const bool areAll = !choices.empty() && Joined(choices, "|") == option.get_option_text();
    if (!areAll) return text + " is " + Explanation(error.what(), name);
    const auto wrong = std::find_if(values.begin(), values.end(), [&](const std::string& value) {
      return std::find(choices.begin(), choices.end(), value) == choices.end();
    });
    const std::string& value = wrong == values.end() ? values.front() : *wrong;
    return name + ": " + Quoted(value) + " is not " + Sequence(choices, "or") +
           Hint(value, choices);
  }

  static std::string Excluded(const CLI::Option& option, const std::string& name) {
    for (const CLI::Option* other : option.get_excludes()) {
      if (other->count() > 0) return name + " excludes " + DeclarationOf(*other).fNames.front();
    }
    return name + " excludes another option";
  }

  // What a check of ours says, after the name of the option.
  static std::string Explanation(std::string text, const std::string& name) {
    if (text.starts_with(name + ": ")) text.erase(0, name.size() + 2);
    return text;
  }

  const CLI::App& fProgram;
  const CLI::App* fChosen = nullptr;
};

}  // namespace

std::string UsageMessage(const CLI::App& options, const CLI::ParseError& error) {
  return Usage(options).Message(error);
}

}  // namespace PosUtil
