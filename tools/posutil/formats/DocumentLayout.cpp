// SPDX-License-Identifier: MIT
#include "formats/DocumentLayout.h"

#include <algorithm>

#include "formats/Token.h"

namespace PosUtil {

void ApplyLayout(const Reader& reader, const DocumentText& text, WriteOptions& options) {
  const std::string_view bytes = text.fPart.fBytes;
  const Token first = reader.NextToken(bytes, text.fBegin);
  if (first.fKind != Token::kBeginDict && first.fKind != Token::kBeginArray) return;
  const Token second = reader.NextToken(bytes, first.fEnd);
  if (second.fKind == Token::kEndDict || second.fKind == Token::kEndArray) return;
  const std::size_t end = bytes.find_last_not_of(" \t\r\n") + 1;
  options.fOnOneLine = bytes.substr(first.fEnd, end - first.fEnd).find('\n') == bytes.npos;
}

}  // namespace PosUtil
