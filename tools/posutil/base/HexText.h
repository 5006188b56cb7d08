// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace PosUtil {

enum class HexCase { kLower, kUpper };

// An unsigned value as hexadecimal digits, with leading zeros: two for a byte, four for a UTF-16
// unit.
template <class Value>
class HexText {
 public:
  explicit HexText(Value value, HexCase digits = HexCase::kLower) {
    const char* const all = digits == HexCase::kLower ? "0123456789abcdef" : "0123456789ABCDEF";
    for (std::size_t i = kLength; i-- > 0; value = static_cast<Value>(value >> 4)) {
      fText[i] = all[value & 15];
    }
  }

  std::string_view View() const { return {fText, kLength}; }

 private:
  static constexpr std::size_t kLength = 2 * sizeof(Value);

  char fText[kLength];
};

}  // namespace PosUtil
