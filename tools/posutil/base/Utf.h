// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace PosUtil {

// The length in bytes of the well-formed UTF-8 character at the start of the text; 0 when there is
// none.
std::size_t Utf8CharacterLength(std::string_view text);

// The offset of the character that contains the byte at `offset`.
std::size_t Utf8Boundary(std::string_view text, std::size_t offset);

// The code of a well-formed character, which is the whole text.
unsigned int Utf8Decode(std::string_view character);

// Appends the character with this code, which is not a surrogate.
void AppendUtf8(std::string& out, unsigned int code);

// Appends zero-terminated UTF-16 units as UTF-8. Returns false for a lone surrogate; `out` then
// holds a part of the text.
bool Utf16ToUtf8(const unsigned short* units, std::string& out);
inline constexpr char kLoneSurrogate[] = "the Unicode string has a lone surrogate";

// Converts well-formed UTF-8 to UTF-16 units.
std::basic_string<unsigned short> Utf8ToUtf16(std::string_view text);

}  // namespace PosUtil
