// SPDX-License-Identifier: MIT
#include "commands/declarations/LiteralArguments.h"

#include <charconv>

namespace PosUtil {

namespace {

constexpr char kMark = '\x1F';  // no argument starts with it

void Hide(std::string& argument) { argument.insert(0, 1, kMark); }

bool IsNegativeNumber(const std::string& argument) {
  const bool hasDigit = argument.find_first_of("0123456789") != std::string::npos;  // not "-inf"
  const char* const end = argument.data() + argument.size();
  double value = 0;
  return argument.starts_with('-') && hasDigit &&
         std::from_chars(argument.data(), end, value).ptr == end;
}

}  // namespace

void HideBrackets(std::vector<std::string>& arguments) {
  for (std::string& argument : arguments) {
    if (argument.starts_with('[') && argument.ends_with(']')) Hide(argument);
  }
}

void HideNegativeNumbers(std::vector<std::string>& arguments) {
  for (std::string& argument : arguments) {
    if (IsNegativeNumber(argument)) Hide(argument);
  }
}

void HideValueOfFlag(std::vector<std::string>& arguments, std::string_view flag) {
  const std::string start = std::string(flag) + '=';
  for (std::string& argument : arguments) {
    if (argument == "--") return;
    const bool isHidden = argument.starts_with(start + kMark);
    if (argument.starts_with(start) && !isHidden) argument.insert(start.size(), 1, kMark);
  }
}

std::string ShowArgument(const std::string& argument) {
  return argument.starts_with(kMark) ? argument.substr(1) : argument;
}

}  // namespace PosUtil
