// SPDX-License-Identifier: MIT
#include "formats/DocumentLayout.h"

#include <optional>
#include <string_view>

#include "formats/Token.h"

namespace PosUtil {

namespace {

// What starts the line of the token; nothing if that is not an indentation.
std::optional<Indent> IndentBefore(std::string_view bytes, const Token& token) {
  const std::size_t begin = bytes.substr(0, token.fBegin).rfind('\n') + 1;  // or 0
  const std::string_view space = bytes.substr(begin, token.fBegin - begin);
  const char first = space.empty() ? ' ' : space.front();
  if (space.find_first_not_of(first) != std::string_view::npos) return std::nullopt;
  return Indent{first, space.size()};
}

}  // namespace

void ApplyLayout(const Reader& reader, const DocumentText& text, WriteOptions& options) {
  const std::string_view bytes = text.fPart.fBytes;
  const Token first = reader.NextToken(bytes, text.fBegin);
  const std::size_t end = bytes.find_last_not_of(" \t\r\n") + 1;
  options.fOnOneLine =
      bytes.substr(first.fBegin, end - first.fBegin).find('\n') == std::string_view::npos;
  if (first.fKind != Token::kBeginDict && first.fKind != Token::kBeginArray) return;
  const Token second = reader.NextToken(bytes, first.fEnd);
  if (second.fKind == Token::kEndDict || second.fKind == Token::kEndArray) return;
  if (bytes.substr(first.fEnd, second.fBegin - first.fEnd).find('\n') == std::string_view::npos) {
    return;
  }
  if (const auto indent = IndentBefore(bytes, second)) options.fIndent = *indent;
}

}  // namespace PosUtil
