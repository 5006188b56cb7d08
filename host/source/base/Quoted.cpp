// SPDX-License-Identifier: MIT
#include "base/Quoted.h"

#include <algorithm>
#include <cstring>

namespace KAPHost {

namespace {

constexpr std::size_t kLongestText = 60;

}  // namespace

std::string TwoDigits(unsigned char byte) {
  constexpr const char* kDigits = "0123456789abcdef";
  return {kDigits[byte >> 4], kDigits[byte & 15]};
}

std::string Quoted(const char* text) {
  std::string quoted = "\"";
  const std::size_t size = ::strnlen(text, kLongestText + 1);
  for (std::size_t i = 0; i < std::min(size, kLongestText); ++i) {
    const auto letter = static_cast<unsigned char>(text[i]);
    if (letter == '"' || letter == '\\') {
      quoted.append(1, '\\').append(1, text[i]);
    } else if (letter == '\n') {
      quoted += "\\n";
    } else if (letter < 0x20 || letter >= 0x7f) {
      quoted.append("\\x").append(TwoDigits(letter));
    } else {
      quoted += text[i];
    }
  }
  return quoted + (size > kLongestText ? "\"..." : "\"");
}

}  // namespace KAPHost
