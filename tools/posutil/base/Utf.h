#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace PosUtil {

// The length in bytes of the well-formed UTF-8 character that the text begins with; 0 when there is none.
std::size_t Utf8CharacterLength(std::string_view text);

// The start of the character that the byte at `offset` belongs to.
std::size_t Utf8Boundary(std::string_view text, std::size_t offset);

// UTF-16 units, zero-terminated, as UTF-8. False, with nothing of use in `out`, when a surrogate stands alone.
bool Utf16ToUtf8(const unsigned short* units, std::string& out);

// Well-formed UTF-8 as UTF-16 units.
std::basic_string<unsigned short> Utf8ToUtf16(std::string_view text);

}  // namespace PosUtil
