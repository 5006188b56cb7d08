#pragma once

#include <string>
#include <string_view>

namespace PosUtil {

// The text as it can be shown on a terminal: control characters and bytes that are no UTF-8 become \xNN, the middle of
// a long text "...".
std::string Printable(std::string_view text);

enum class Quotes { kAsTheyAre, kEscaped };

// The same without a limit, appended; on demand with a backslash before double quotes and backslashes.
void AppendPrintable(std::string& out, std::string_view text, Quotes quotes = Quotes::kAsTheyAre);

}  // namespace PosUtil
