// SPDX-License-Identifier: MIT
#include "posimpl/notation/NumberText.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "posimpl/notation/Digits.h"

namespace NPOSObjectImpl {

namespace {

constexpr int kPrecision = 32;
constexpr double kWholeLimit = 9.2e18;  // below, whole numbers fit 64 bits, and they are exact
constexpr double kShortLimit = 4e9;     // below, 32 bits, which are quicker

constexpr std::uint32_t kEightDigits = 100'000'000;
constexpr std::uint64_t kZeros = 0x3030303030303030;  // "00000000"

// The eight digits of a number below 10^8, one in each byte, the first one in the lowest. Numbers
// side by side in one word are divided by one multiplication with the inverse of the divisor.
std::uint64_t EightDigits(std::uint32_t value) noexcept {
  const std::uint64_t fours = value / 10'000 | std::uint64_t{value % 10'000} << 32;
  const std::uint64_t hundreds = fours * 10486 >> 20 & 0x0000007f'0000007f;
  const std::uint64_t twos = ((fours - 100 * hundreds) << 16) + hundreds;
  const std::uint64_t tens = twos * 103 >> 10 & 0x000f'000f'000f'000f;
  return ((twos - 10 * tens) << 8) + tens;
}

// Without a branch that depends on the number of digits, which the processor could not predict.
// Takes a positive number. Writes up to 7 characters beyond the end that it returns.
char* WriteShort(std::uint32_t value, char* text) noexcept {
  std::uint64_t digits = EightDigits(value % kEightDigits);
  unsigned leadingZeros = 0;
  if (value >= kEightDigits) {
    const std::uint32_t first = value / kEightDigits;
    if (first >= 10) *text++ = static_cast<char>('0' + first / 10);
    *text++ = static_cast<char>('0' + first % 10);
  } else {
    leadingZeros = static_cast<unsigned>(std::countr_zero(digits)) / 8;
  }
  digits = (digits | kZeros) >> 8 * leadingZeros;
  std::memcpy(text, &digits, sizeof digits);
  return text + (8 - leadingZeros);
}

// The exponent of a number in decimal notation, as far as its sign matters.
long Exponent(const char* begin, const char* end) noexcept {
  constexpr long kVast = 1000000;
  if (begin != end && *begin == '+') ++begin;
  long exponent = 0;
  if (std::from_chars(begin, end, exponent).ec == std::errc::result_out_of_range) {
    exponent = *begin == '-' ? -kVast : kVast;
  }
  return exponent;
}

// Whether the number, whose text is known to be one, is larger than 1: a leading digit that counts
// before the point, or no more zeros after it than the exponent makes up for.
bool IsLarge(const char* begin, const char* end) noexcept {
  long scale = 0;
  bool counts = false;
  bool isAfterPoint = false;
  for (; begin != end && (IsDigit(*begin) || *begin == '.'); ++begin) {
    if (*begin == '.') {
      isAfterPoint = true;
      continue;
    }
    counts = counts || *begin != '0';
    if (counts && !isAfterPoint) ++scale;
    if (!counts && isAfterPoint) --scale;
  }
  if (begin != end) scale += Exponent(begin + 1, end);
  return scale > 0;
}

}  // namespace

char* WriteNumber(double value, char* text) noexcept {
  char* const end = text + kNumberTextSize;
  if (value > 0 && value < kShortLimit) {
    const auto whole = static_cast<std::uint32_t>(value);
    if (static_cast<double>(whole) == value) return WriteShort(whole, text);
  } else if (std::abs(value) < kWholeLimit) {
    const auto whole = static_cast<std::int64_t>(value);
    const bool isExact =
        static_cast<double>(whole) == value && (whole != 0 || !std::signbit(value));
    if (isExact) return std::to_chars(text, end, whole).ptr;
  }
  return std::to_chars(text, end, value, std::chars_format::general, kPrecision).ptr;
}

double ParseNumber(const char* begin, const char* end) noexcept {
  if (begin != end && *begin == '+') {  // which from_chars does not take
    ++begin;
    if (begin != end && *begin == '-') return 0;
  }
  double value = 0;
  const auto [stop, error] = std::from_chars(begin, end, value);
  if (error != std::errc::result_out_of_range) return value;
  const bool isNegative = *begin == '-';
  const double magnitude =
      IsLarge(isNegative ? begin + 1 : begin, stop) ? std::numeric_limits<double>::infinity() : 0;
  return isNegative ? -magnitude : magnitude;
}

}  // namespace NPOSObjectImpl
