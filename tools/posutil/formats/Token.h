// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace PosUtil {

// A piece of a document's text, in any format. Commas and colons are none.
struct Token {
  enum Kind : char { kBeginDict, kEndDict, kBeginArray, kEndArray, kScalar, kEnd };

  Kind fKind;
  std::size_t fBegin;
  std::size_t fEnd;  // after the last byte
};

// The token of a bracket, which is the first byte at `at`; nothing for another byte.
inline std::optional<Token> BracketToken(std::string_view text, std::size_t at, char beginDict,
                                         char endDict) {
  const char byte = text[at];
  if (byte == beginDict) return Token{Token::kBeginDict, at, at + 1};
  if (byte == endDict) return Token{Token::kEndDict, at, at + 1};
  if (byte == '[') return Token{Token::kBeginArray, at, at + 1};
  if (byte == ']') return Token{Token::kEndArray, at, at + 1};
  return std::nullopt;
}

// The first byte at or after `at` that is not in `skipped`; the end of the text if there is none.
inline std::size_t Skip(std::string_view text, std::size_t at, std::string_view skipped) {
  const std::size_t found = text.find_first_not_of(skipped, at);
  return found == std::string_view::npos ? text.size() : found;
}

// The end of a literal whose first byte is at `at`: after the next byte `close` without a backslash
// before it.
inline std::size_t EndOfLiteral(std::string_view text, std::size_t at, char close) {
  for (++at; at < text.size() && text[at] != close; ++at) {
    if (text[at] == '\\') ++at;
  }
  return at < text.size() ? at + 1 : text.size();
}

}  // namespace PosUtil
