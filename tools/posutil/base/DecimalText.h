// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace PosUtil {

// Writes the text of DecimalText to a place for kLongestDecimal characters; returns its end.
inline constexpr std::size_t kLongestDecimal = 32;
char* WriteDecimal(char* place, double number);

// A number as the shortest decimal text that reads back as the same number, in any locale.
class DecimalText {
 public:
  enum Form { kAny, kWithoutExponent };

  explicit DecimalText(double number, Form form = kAny);

  std::string_view View() const { return {fText, fLength}; }

 private:
  char fText[1100];  // the longest number without an exponent has 1077 characters
  std::size_t fLength;
};

}  // namespace PosUtil
