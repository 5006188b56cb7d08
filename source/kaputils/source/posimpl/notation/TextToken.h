// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>

#include "pos/POSException.h"

namespace NPOSObjectImpl {

// A syntax error: one static message. Caught where reading began; the caller learns the place, not
// the message.
class CFTParseError : public KAP_T_MT::POSException {
 public:
  using POSException::POSException;
};

// How a character begins a token of the text notation.
enum class TokenKind : unsigned char {
  kUnexpected,
  kEnd,
  kSpace,
  kOpen,
  kClose,
  kWord,
  kParen,
  kUnicode,
  kNumber
};

using TokenKindTable = std::array<TokenKind, 256>;

constexpr void MarkKind(TokenKindTable& kinds, const char* characters, TokenKind kind) {
  for (; *characters != '\0'; ++characters) kinds[static_cast<unsigned char>(*characters)] = kind;
}

inline constexpr TokenKindTable kTokenKinds = [] {
  TokenKindTable kinds = {};
  kinds[0] = TokenKind::kEnd;
  MarkKind(kinds, "\t\n\r ", TokenKind::kSpace);
  MarkKind(kinds, "<[", TokenKind::kOpen);
  MarkKind(kinds, ">]", TokenKind::kClose);
  MarkKind(kinds, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", TokenKind::kWord);
  MarkKind(kinds, "(", TokenKind::kParen);
  MarkKind(kinds, "`", TokenKind::kUnicode);
  MarkKind(kinds, "0123456789+-.", TokenKind::kNumber);
  return kinds;
}();

inline TokenKind KindOf(char first) noexcept {
  return kTokenKinds[static_cast<unsigned char>(first)];
}

// The tokens of the text notation, read from a cursor into storage of their own, which limits their
// length. Each reader expects the cursor on the first character of the token and leaves it just
// after the token, faulty or not; a literal that the text does not close leaves it at the end of
// the text. Faults are CFTParseErrors.

// A word, or a parenthesised string, in which a backslash takes the next character literally.
class StringToken {
 public:
  static constexpr std::size_t kMaxLength =
      100;  // between the parentheses as written, backslashes included

  const char* Read(const char*& cursor);  // the text; lives as long as the token

 private:
  const char* ReadWord(const char*& cursor);
  const char* ReadParenthesised(const char*& cursor);

  char fText[kMaxLength + 1];
};

// Hexadecimal digits between grave accents, four for each unit.
class UnicodeToken {
 public:
  static constexpr std::size_t kMaxLength = 401;  // digits

  const unsigned short* Read(
      const char*& cursor);  // ends in a zero unit; lives as long as the token

 private:
  unsigned short fUnits[kMaxLength / 4 + 1];
};

// The longest part that is a decimal number, 0 when there is none: what strtod gives in the C
// locale, whatever the process's locale is.
double ReadNumberToken(const char*& cursor);
constexpr std::ptrdiff_t kMaxNumberLength = 100;

}  // namespace NPOSObjectImpl
