// SPDX-License-Identifier: MIT
#include "commands/verdicts/Verdict.h"

#include "base/Printable.h"
#include "base/SyntaxError.h"

namespace PosUtil {

std::string MessageLines(const std::string& name, const std::string& ruleName,
                         const VerdictMessage& message) {
  std::string lines = message.fPlace ? NameOfPlace(name, *message.fPlace) : Printable(name);
  lines += ": ";
  AppendPrintable(lines, message.fText);
  if (!message.fFound.empty()) AppendPrintable(lines += "; found ", message.fFound);
  if (message.fOtherAlternatives > 0) {
    lines +=
        " (the closest of " + std::to_string(message.fOtherAlternatives + 1) + " alternatives)";
  }
  if (message.fRule) lines += "\n" + NameOfPlace(ruleName, *message.fRule) + ": note: the rule";
  return lines;
}

}  // namespace PosUtil
