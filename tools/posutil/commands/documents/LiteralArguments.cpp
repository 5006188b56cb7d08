// SPDX-License-Identifier: MIT
#include "commands/documents/LiteralArguments.h"

namespace PosUtil {

namespace {

constexpr char kMark = '\x1F';  // no argument starts with it

void Hide(std::string& argument) { argument.insert(0, 1, kMark); }

}  // namespace

void HideBrackets(std::vector<std::string>& arguments) {
  for (std::string& argument : arguments) {
    if (argument.starts_with('[') && argument.ends_with(']')) Hide(argument);
  }
}

void HideNegativeNumbers(std::vector<std::string>& arguments) {
  for (std::string& argument : arguments) {
    const char second = argument.size() > 1 ? argument[1] : '\0';
    if (argument[0] == '-' && ((second >= '0' && second <= '9') || second == '.')) Hide(argument);
  }
}

std::string ShowArgument(const std::string& argument) {
  return argument.starts_with(kMark) ? argument.substr(1) : argument;
}

}  // namespace PosUtil
