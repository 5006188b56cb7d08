#pragma once

#include <string>
#include <string_view>

#include "base/Failure.h"
#include "base/TextPart.h"

namespace PosUtil {

// A document that is not well-formed. The text is FILE:LINE:COLUMN and the message, then the line
// and, below it, a caret at the byte where the reader stopped. Lines and columns count from 1; a
// column is a character, and a tab is one.
class SyntaxError : public Failure {
 public:
  // `offset` counts bytes from the start of the part; past the end means the end.
  SyntaxError(const std::string& name, const TextPart& part, std::size_t offset,
              const std::string& message);
};

// A line to show, and the number of characters before the caret.
struct Excerpt {
  std::string fLine;
  std::size_t fCaret;
};

// Cuts a long line around `offset`. A tab or a control character becomes one character, so that
// spaces alone position the caret.
Excerpt ExcerptAround(std::string_view line, std::size_t offset);

}  // namespace PosUtil
