// SPDX-License-Identifier: MIT
#include "commands/declarations/ManualPage.h"

#include <string_view>

#include "KAPUtilsVers.h"

namespace PosUtil {

namespace {

constexpr char kDescription[] =
    "reads documents of property objects: numbers, strings, binary data, arrays and dictionaries, "
    "in text notation, JSON or TypeA. It prints, queries, changes, compares, converts and checks "
    "them. It loads libKAPUtils.so to do so.";

constexpr std::pair<const char*, const char*> kStatuses[] = {
    {"0", "Success."},
    {"1", "A negative result: a value is absent, a document is not valid, or documents differ."},
    {"2", "Wrong usage."},
    {"3", "Unreadable or malformed input, lost output, or a report of the library."}};

constexpr std::pair<const char*, const char*> kEnvironment[] = {
    {"NO_COLOR", "If it is set and not empty, --color=auto means no colours."},
    {"TERM", "If it is missing or \"dumb\", --color=auto means no colours and no progress."}};

// Text in which man finds nothing of its own language.
std::string Escaped(std::string_view text) {
  std::string out;
  bool isLineStart = true;
  for (const char c : text) {
    if (isLineStart && (c == '.' || c == '\'')) out += "\\&";
    isLineStart = c == '\n';
    switch (c) {
      case '\\':
        out += "\\e";
        break;
      case '-':
        out += "\\-";
        break;
      case '\'':
        out += "\\(aq";
        break;
      case '`':
        out += "\\(ga";
        break;
      case '^':
        out += "\\(ha";
        break;
      case '~':
        out += "\\(ti";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string Bold(const std::string& text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Escaped(text) + "\\fR"; }

std::string Sentence(std::string text) {
  return Escaped(text.ends_with('.') ? text : text + ".") + "\n";
}

std::string Item(const std::string& head, const std::string& text) {
  return ".TP\n" + head + "\n" + Sentence(text);
}

std::string OptionItem(const DeclaredOption& option) {
  std::string head;
  for (const std::string& name : option.fNames) head += (head.empty() ? "" : ", ") + Bold(name);
  if (option.fIsValueOptional)
    head += "[=" + Italic(option.fValue) + "]";
  else if (!option.fValue.empty())
    head += " " + Italic(option.fValue);
  return Item(head, option.fDescription);
}

std::string ArgumentItem(const DeclaredOption& argument) {
  std::string head = Italic(argument.fNames.front());
  if (!argument.fChoices.empty()) {
    head += ": ";
    for (const std::string& choice : argument.fChoices) {
      head += (head.ends_with(' ') ? "" : "|") + Bold(choice);
    }
  }
  return Item(head, argument.fDescription);
}

std::string Synopsis(const DeclaredCommand& command) {
  std::string line = Bold("posutil " + command.fName) + " [" + Italic("OPTION") + " ...]";
  for (const DeclaredOption& option : command.fOptions) {
    if (!option.fIsRequired) continue;
    line += " " + Bold(option.fNames.front()) + " " + Italic(option.fValue);
  }
  for (const DeclaredOption& argument : command.fArguments) {
    const std::string text = Italic(argument.fNames.front()) + (argument.fIsRepeated ? " ..." : "");
    line += argument.fIsRequired ? " " + text : " [" + text + "]";
  }
  return line + "\n";
}

// The parts of the text at the end of a command's help: paragraphs, then examples.
struct Footer {
  std::string fParagraphs;
  std::string fExamples;
};

Footer Split(std::string_view text) {
  Footer footer;
  while (!text.empty()) {
    const std::string_view block = text.substr(0, text.find("\n\n"));
    text.remove_prefix(std::min(block.size() + 2, text.size()));
    if (!block.starts_with("Example")) {
      footer.fParagraphs += ".PP\n" + Escaped(block) + "\n";
      continue;
    }
    std::string_view lines = block.substr(std::min(block.find('\n'), block.size() - 1) + 1);
    while (!lines.empty()) {
      const std::string_view line = lines.substr(0, lines.find('\n'));
      lines.remove_prefix(std::min(line.size() + 1, lines.size()));
      footer.fExamples +=
          Escaped(line.substr(std::min(line.find_first_not_of(' '), line.size()))) + "\n";
    }
  }
  return footer;
}

}  // namespace

std::string ManualPage(const Declarations& declarations) {
  std::string synopsis;
  std::string commands;
  std::string examples;
  for (const DeclaredCommand& command : declarations.fCommands) {
    const Footer footer = Split(command.fFooter);
    synopsis += (synopsis.empty() ? "" : ".br\n") + Synopsis(command);
    commands += ".SS " + Escaped(command.fName) + "\n" + Sentence(command.fDescription);
    for (const DeclaredOption& argument : command.fArguments) commands += ArgumentItem(argument);
    for (const DeclaredOption& option : command.fOptions) commands += OptionItem(option);
    commands += footer.fParagraphs;
    examples += footer.fExamples;
  }
  std::string page =
      ".\\\" SPDX-License-Identifier: MIT\n.TH POSUTIL 1 \"\" \"KAPUtils " +
      Escaped(KAPUtils_BuildVersion()) + "\" \"User Commands\"\n" +
      ".SH NAME\nposutil \\- print, query, change, compare, convert and check documents "
      "of property objects\n" +
      ".SH SYNOPSIS\n.nh\n.ad l\n" + synopsis + ".ad b\n.hy\n.SH DESCRIPTION\n.B posutil\n" +
      Sentence(kDescription) + ".SH OPTIONS\nEvery command takes these options.\n";
  for (const DeclaredOption& option : declarations.fOptions) page += OptionItem(option);
  page += ".SH COMMANDS\n" + commands + ".SH EXIT STATUS\n";
  for (const auto& [status, meaning] : kStatuses) page += Item(Bold(status), meaning);
  page += ".SH ENVIRONMENT\n";
  for (const auto& [name, meaning] : kEnvironment) page += Item(Bold(name), meaning);
  return page + ".SH EXAMPLES\n.EX\n" + examples + ".EE\n";
}

}  // namespace PosUtil
