// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace PosUtil {

// The text in a form that is safe on a terminal: control characters and invalid UTF-8 become \xNN,
// characters that change the direction of the text become \uNNNN, and the middle of a long text
// becomes "...".
std::string Printable(std::string_view text);

// Returns whether a character of valid UTF-8 is one of these: a control character, or one that
// changes the order or the lines of the text around it.
bool IsUnsafe(std::string_view character);

enum class Quotes { kAsTheyAre, kEscaped };

// Appends the same without a limit on the length. With kEscaped, double quotes and backslashes get
// a backslash.
void AppendPrintable(std::string& out, std::string_view text, Quotes quotes = Quotes::kAsTheyAre);

}  // namespace PosUtil
