// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace PosUtil {

// Arguments that the parser would not take as they are: it reads [0] as a list and -5 as an option.
// A command hides them before the parser sees them; Options shows them again.
void HideBrackets(std::vector<std::string>& arguments);
void HideNegativeNumbers(std::vector<std::string>& arguments);
// The parser takes a flag's value of true, false, {} or nothing for that of the flag itself.
void HideValueOfFlag(std::vector<std::string>& arguments, std::string_view flag);
std::string ShowArgument(const std::string& argument);

}  // namespace PosUtil
