// SPDX-License-Identifier: MIT
#include "commands/verdicts/Verdict.h"

#include "base/Printable.h"
#include "base/SyntaxError.h"

namespace PosUtil {

namespace {

constexpr std::size_t kLongest = 2000;  // a message fits on a page

}  // namespace

std::string MessageLines(const std::string& name, const std::string& ruleName,
                         const VerdictMessage& message) {
  std::string lines = message.fPlace ? NameOfPlace(name, *message.fPlace) : Printable(name);
  lines += ": ";
  AppendPrintable(lines, std::string_view(message.fText).substr(0, kLongest));
  if (message.fText.size() > kLongest) lines += "...";
  if (!message.fFound.empty()) lines += "; found " + message.fFound;
  if (message.fOtherAlternatives > 0) {
    lines +=
        " (the closest of " + std::to_string(message.fOtherAlternatives + 1) + " alternatives)";
  }
  if (message.fRule) lines += "\n" + NameOfPlace(ruleName, *message.fRule) + ": note: the rule";
  return lines;
}

}  // namespace PosUtil
