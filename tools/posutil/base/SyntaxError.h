#pragma once

#include <string>
#include <string_view>

#include "base/Failure.h"
#include "base/TextPart.h"
#include "files/Source.h"

namespace PosUtil {

// A document that cannot be read. The text is FILE:LINE:COLUMN and the message, then the line and,
// below it, a caret where the reader stopped. Lines count from 1; so do columns, in characters, a
// tab being one.
class SyntaxError : public Failure {
 public:
  // `offset` is the byte where the reader stopped, at most the size of the source.
  SyntaxError(const Source& source, std::size_t offset, const std::string& message);
  // The same for a text of which only a part is at hand; `offset` counts in it.
  SyntaxError(const std::string& name, const TextPart& part, std::size_t offset,
              const std::string& message);
};

// A line to show, and the width of what stands before the caret.
struct Excerpt {
  std::string fLine;
  std::size_t fCaret;
};

// The line around `offset`, cut on either side when it is long. Tabs and control characters become
// one character each, so that the caret needs no tabs.
Excerpt ExcerptAround(std::string_view line, std::size_t offset);

}  // namespace PosUtil
