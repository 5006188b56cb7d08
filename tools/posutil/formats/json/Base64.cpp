// SPDX-License-Identifier: MIT
#include "formats/json/Base64.h"

#include <array>

namespace PosUtil {

namespace {

constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr unsigned char kNoDigit = 0xFF;

constexpr auto kValues = [] {
  std::array<unsigned char, 256> values{};
  for (auto& value : values) value = kNoDigit;
  for (unsigned char i = 0; i < 64; ++i) {
    values[static_cast<unsigned char>(kBase64Digits[i])] = i;
  }
  return values;
}();

}  // namespace

std::string Base64Encode(const unsigned char* data, std::size_t size) {
  std::string out;
  out.reserve((size + 2) / 3 * 4);
  for (std::size_t i = 0; i < size; i += 3) {
    const std::size_t left = size - i;
    const unsigned int group = static_cast<unsigned int>(data[i]) << 16 |
                               (left > 1 ? static_cast<unsigned int>(data[i + 1]) << 8 : 0) |
                               (left > 2 ? data[i + 2] : 0U);
    out += kBase64Digits[group >> 18];
    out += kBase64Digits[group >> 12 & 63];
    out += left > 1 ? kBase64Digits[group >> 6 & 63] : '=';
    out += left > 2 ? kBase64Digits[group & 63] : '=';
  }
  return out;
}

bool Base64Decode(std::string_view text, std::vector<unsigned char>& out) {
  if (text.size() % 4 != 0) return false;
  std::size_t padding = 0;
  while (padding < 2 && text.ends_with('=')) {
    text.remove_suffix(1);
    ++padding;
  }
  out.reserve(text.size() / 4 * 3 + 2);
  unsigned int bits = 0;
  unsigned int bitCount = 0;
  for (const char digit : text) {
    const unsigned int value = kValues[static_cast<unsigned char>(digit)];
    if (value == kNoDigit) return false;
    bits = (bits << 6 | value) & 0xFFFF;
    bitCount += 6;
    if (bitCount >= 8) {
      bitCount -= 8;
      out.push_back(static_cast<unsigned char>(bits >> bitCount));
    }
  }
  return (bits & ((1U << bitCount) - 1)) == 0;  // the unused bits are zero
}

}  // namespace PosUtil
