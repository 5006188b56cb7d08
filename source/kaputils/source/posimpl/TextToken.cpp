#include "TextToken.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "TextReader.h"

namespace NPOSObjectImpl {

namespace {

using KindTable = std::array<TokenKind, 256>;

constexpr void Mark(KindTable& kinds, const char* characters, TokenKind kind) {
  for (; *characters != '\0'; ++characters) kinds[static_cast<unsigned char>(*characters)] = kind;
}

constexpr KindTable kKinds = [] {
  KindTable kinds = {};
  kinds[0] = TokenKind::kEnd;
  Mark(kinds, "\t\n\r ", TokenKind::kSpace);
  Mark(kinds, "<[", TokenKind::kOpen);
  Mark(kinds, ">]", TokenKind::kClose);
  Mark(kinds, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", TokenKind::kWord);
  Mark(kinds, "(", TokenKind::kParen);
  Mark(kinds, "`", TokenKind::kUnicode);
  Mark(kinds, "0123456789+-.", TokenKind::kNumber);
  return kinds;
}();

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }
bool ContinuesWord(char c) noexcept { return KindOf(c) == TokenKind::kWord || IsDigit(c); }
bool ContinuesNumber(char c) noexcept { return IsDigit(c) || c == '.'; }

// The value of a hexadecimal digit, or 16.
unsigned int HexValue(char c) noexcept {
  unsigned int value = 0;
  return std::from_chars(&c, &c + 1, value, 16).ec == std::errc() ? value : 16;
}

unsigned short HexUnit(const char* digits) {
  unsigned int unit = 0;
  for (int i = 0; i < 4; ++i) {
    const unsigned int value = HexValue(digits[i]);
    if (value > 15) throw CFTParseError("Malformed Unicode string");
    unit = unit * 16 + value;
  }
  return static_cast<unsigned short>(unit);
}

// Up to 15 digits and nothing else: the number is exact in 64 bits and in a double, so no
// conversion is needed. A third of the time of the general way (bench/bench_text.cpp).
constexpr std::size_t kExactDigits = 15;

double ToNumber(const char* begin, const char* end) {
  double value = 0;
  if (*begin == '+') ++begin;                                    // which from_chars does not take
  std::from_chars(begin, end, value, std::chars_format::fixed);  // leaves 0 when there is no number
  return value;
}

}  // namespace

TokenKind KindOf(char first) noexcept { return kKinds[static_cast<unsigned char>(first)]; }

const char* StringToken::Read(const char*& cursor) {
  return *cursor == '(' ? ReadParenthesised(cursor) : ReadWord(cursor);
}

const char* StringToken::ReadWord(const char*& cursor) {
  const char* begin = cursor;
  while (ContinuesWord(*cursor)) ++cursor;
  const auto length = static_cast<std::size_t>(cursor - begin);
  if (length > kMaxLength) throw CFTParseError("Exceeded max string length");
  std::memcpy(fText, begin, length);
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

double ReadNumberToken(const char*& cursor) {
  const char* begin = cursor;
  std::uint64_t digits = 0;
  while (IsDigit(*cursor)) digits = digits * 10 + static_cast<std::uint64_t>(*cursor++ - '0');
  if (cursor == begin) ++cursor;  // a sign or a point
  const bool whole = IsDigit(*begin) && *cursor != '.';
  while (ContinuesNumber(*cursor)) ++cursor;
  const auto length = static_cast<std::size_t>(cursor - begin);
  if (length > kMaxNumberLength) throw CFTParseError("Exceeded max number length");
  return whole && length <= kExactDigits ? static_cast<double>(digits) : ToNumber(begin, cursor);
}

}  // namespace NPOSObjectImpl
