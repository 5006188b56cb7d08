#pragma once

#include <array>

namespace NPOSObjectImpl {

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

}  // namespace NPOSObjectImpl
