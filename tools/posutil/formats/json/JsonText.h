// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "files/Output.h"

namespace PosUtil {

// Writes a zero-terminated text as a JSON string. Throws ValueError for invalid UTF-8.
void PutJsonString(Output& out, const char* text);

// The character that a letter after a backslash stands for; 0 for none, and for 'u'.
char JsonEscape(char letter);

// The text of a well-formed JSON string in quotes.
std::string JsonUnescaped(std::string_view quoted);

}  // namespace PosUtil
