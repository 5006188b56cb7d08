// SPDX-License-Identifier: MIT
#include <iostream>

#include "kaphost/Debug.h"

namespace KAPHost {

namespace {

struct Word {
  std::string_view fName;
  const char* fHelp;
  void (*fApply)(DebugOptions& options, bool& checks, std::string_view value);
  bool fTakesValue;
  const char* fDefault;  // null: the word needs a value, if it takes one
};

constexpr Word kWords[] = {
    {"trace", "trace[=FILE]     writes every call to FILE; as JSON if the name ends in .json",
     [](DebugOptions& options, bool&, std::string_view value) { options.fTrace = value; }, true,
     "-"},
    {"interface", "interface=NAME   traces this interface only; may be repeated",
     [](DebugOptions& options, bool&, std::string_view value) {
       options.fInterfaces.emplace_back(value);
     },
     true, nullptr},
    {"component", "component=NAME   traces calls from and to this component; may be repeated",
     [](DebugOptions& options, bool&, std::string_view value) {
       options.fComponents.emplace_back(value);
     },
     true, nullptr},
    {"stacks", "stacks           adds stacks to reports and to the list of leaks",
     [](DebugOptions& options, bool&, std::string_view) { options.fStacks = true; }, false,
     nullptr},
    {"checks", "checks           reports misuse: dead handles, memory, threads, results",
     [](DebugOptions&, bool& checks, std::string_view) { checks = true; }, false, nullptr},
    {"leaks", "leaks[=FILE]     lists what is held at the end, and who made it",
     [](DebugOptions& options, bool&, std::string_view value) { options.fLeaks = value; }, true,
     "-"},
    {"help", "help             prints this list", nullptr, false, nullptr},
};

std::string Help() {
  std::string text = "the words of KAPHOST_DEBUG, separated by commas:\n";
  for (const Word& word : kWords) text.append("  ").append(word.fHelp).append("\n");
  return text + "FILE is standard error if it is left out or \"-\".\n";
}

[[noreturn]] void Refuse(std::string_view word, const char* why) {
  throw std::invalid_argument("\"" + std::string(word) + "\" " + why + "; " + Help());
}

void Apply(std::string_view text, DebugOptions& options, bool& checks) {
  const std::size_t sign = text.find('=');
  const std::string_view name = text.substr(0, sign);
  for (const Word& word : kWords) {
    if (word.fName != name) continue;
    if (!word.fApply) {
      std::cerr << Help();
    } else if (sign != std::string_view::npos) {
      if (!word.fTakesValue) Refuse(text, "takes no value");
      if (sign + 1 == text.size()) Refuse(text, "lacks a value");
      word.fApply(options, checks, text.substr(sign + 1));
    } else {
      if (word.fTakesValue && !word.fDefault) Refuse(text, "lacks a value");
      word.fApply(options, checks, word.fDefault ? word.fDefault : "");
    }
    return;
  }
  Refuse(text, "is not a word of KAPHOST_DEBUG");
}

}  // namespace

void ParseDebugWords(std::string_view words, DebugOptions& options, bool& checks) {
  DebugOptions changed = options;
  bool changedChecks = checks;
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(','), words.size());
    if (end != 0) Apply(words.substr(0, end), changed, changedChecks);
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  options = std::move(changed);
  checks = changedChecks;
}

}  // namespace KAPHost
