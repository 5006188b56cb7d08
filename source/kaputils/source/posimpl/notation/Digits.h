// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace NPOSObjectImpl {

// Digits as the formats of the library write and read them, whatever the process's locale.

inline constexpr char kUpperHexDigits[] = "0123456789ABCDEF";
inline constexpr char kLowerHexDigits[] = "0123456789abcdef";

constexpr bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// The value of a hexadecimal digit of either case, 16 for another character.
constexpr unsigned HexValue(char c) noexcept {
  if (IsDigit(c)) return static_cast<unsigned>(c - '0');
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a' + 10) : 16;
}

// Reads a number of exactly `count` hexadecimal digits. False if a character is not a hexadecimal
// digit.
constexpr bool ReadHex(const char* digits, std::size_t count, unsigned* number) noexcept {
  *number = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned value = HexValue(digits[i]);
    if (value > 15) return false;
    *number = *number * 16 + value;
  }
  return true;
}

}  // namespace NPOSObjectImpl
