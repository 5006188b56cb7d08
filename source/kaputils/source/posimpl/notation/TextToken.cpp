// SPDX-License-Identifier: MIT
#include "posimpl/notation/TextToken.h"

#include <charconv>
#include <cstdint>
#include <cstring>

#include "posimpl/notation/Digits.h"

namespace NPOSObjectImpl {

namespace {

// A table: the processor would guess wrong where letters and digits take turns.
constexpr auto kContinuesWord = [] {
  std::array<bool, 256> continues{};
  for (unsigned c = 0; c < continues.size(); ++c) {
    continues[c] = kTokenKinds[c] == TokenKind::kWord || (c >= '0' && c <= '9');
  }
  return continues;
}();

bool ContinuesWord(char c) noexcept { return kContinuesWord[static_cast<unsigned char>(c)]; }
bool ContinuesNumber(char c) noexcept { return IsDigit(c) || c == '.'; }

unsigned short HexUnit(const char* digits) {
  unsigned unit = 0;
  if (!ReadHex(digits, 4, &unit)) throw CFTParseError("Malformed Unicode string");
  return static_cast<unsigned short>(unit);
}

// With no more digits than this, point or none, the digits as a whole number and the power of ten
// are exact as doubles, so one division rounds as a conversion does (measured in
// bench/bench_text.cpp).
constexpr std::ptrdiff_t kExactDigits = 15;
constexpr double kPowersOfTen[kExactDigits] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                               1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};

std::uint64_t TakeDigits(const char*& cursor, std::uint64_t value) noexcept {
  for (unsigned char digit = 0; (digit = static_cast<unsigned char>(*cursor - '0')) <= 9;) {
    value = value * 10 + digit;
    ++cursor;
  }
  return value;
}

double ToNumber(const char* begin, const char* end) {
  double value = 0;
  if (*begin == '+') ++begin;                                    // which from_chars does not take
  std::from_chars(begin, end, value, std::chars_format::fixed);  // without a number it leaves 0
  return value;
}

}  // namespace

const char* StringToken::Read(const char*& cursor) {
  return *cursor == '(' ? ReadParenthesised(cursor) : ReadWord(cursor);
}

const char* StringToken::ReadWord(const char*& cursor) {
  const char* const begin = cursor;
  std::size_t length = 0;
  for (; length < kMaxLength && ContinuesWord(begin[length]); ++length) {
    fText[length] = begin[length];
  }
  cursor = begin + length;
  if (ContinuesWord(*cursor)) [[unlikely]] {
    while (ContinuesWord(*cursor)) ++cursor;
    throw CFTParseError("Exceeded max string length");
  }
  fText[length] = '\0';
  return fText;
}

const char* StringToken::ReadParenthesised(const char*& cursor) {
  const char* begin = ++cursor;
  std::size_t length = 0;
  for (; *cursor != ')'; ++cursor) {
    if (*cursor == '\\') ++cursor;
    if (*cursor == '\0') throw CFTParseError("Empty text string");
    if (length < kMaxLength) fText[length++] = *cursor;
  }
  const auto rawLength = static_cast<std::size_t>(cursor - begin);
  ++cursor;
  if (rawLength > kMaxLength) throw CFTParseError("Exceeded max string length");
  fText[length] = '\0';
  return fText;
}

const unsigned short* UnicodeToken::Read(const char*& cursor) {
  const char* begin = ++cursor;
  while (*cursor != '`') {
    if (*cursor++ == '\0') {
      --cursor;
      throw CFTParseError("Empty text string");
    }
  }
  const auto length = static_cast<std::size_t>(cursor - begin);
  ++cursor;
  if (length > kMaxLength) throw CFTParseError("Exceeded max string length");
  if (length % 4 != 0) throw CFTParseError("Malformed Unicode string");
  unsigned short* unit = fUnits;
  for (const char* digits = begin; digits != begin + length; digits += 4) *unit++ = HexUnit(digits);
  *unit = 0;
  return fUnits;
}

// The place is a local variable until the end: the compiler would store a reference after each
// digit.
double ReadNumberToken(const char*& cursor) {
  const char* const begin = cursor;
  const char* place = begin;
  if (*place == '-' || *place == '+') ++place;
  const char* const first = place;
  std::uint64_t digits = TakeDigits(place, 0);
  const char* const point = place;
  const bool isWhole = *point != '.';
  if (!isWhole) digits = TakeDigits(++place, digits);
  if (point != first && !ContinuesNumber(*place) && place - first <= kExactDigits) {
    cursor = place;
    auto value = static_cast<double>(static_cast<std::int64_t>(digits));
    if (!isWhole) value /= kPowersOfTen[place - point - 1];
    return *begin == '-' ? -value : value;
  }
  while (ContinuesNumber(*place)) ++place;
  cursor = place;
  if (place - begin > kMaxNumberLength) throw CFTParseError("Exceeded max number length");
  return ToNumber(begin, place);
}

}  // namespace NPOSObjectImpl
