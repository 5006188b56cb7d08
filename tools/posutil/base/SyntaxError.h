// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "base/Failure.h"
#include "base/TextPart.h"

namespace PosUtil {

// A document that cannot be read. The text is FILE:LINE:COLUMN and the message, then the line and,
// below it, a caret at the fault.
class SyntaxError : public PlacedFailure {
 public:
  // `offset` counts bytes from the start of the part; past the end means the end.
  SyntaxError(const std::string& name, const TextPart& part, std::size_t offset,
              const std::string& message);
};

// The same for a document that is well formed, but has a value that property objects cannot hold.
class UnheldValue : public SyntaxError {
 public:
  explicit UnheldValue(const SyntaxError& error) : SyntaxError(error) {}
};

// FILE:LINE:COLUMN, which starts every message about a place in an input.
std::string NameOfPlace(const std::string& name, const TextPlace& place);

// A line to show, and the number of terminal columns before the caret.
struct Excerpt {
  std::string fLine;
  std::size_t fCaret;
};

// Cuts a long line around `offset`. A tab becomes a space; characters that are not safe on a
// terminal become escapes. Wide and combining characters count with their width.
Excerpt ExcerptAround(std::string_view line, std::size_t offset);

}  // namespace PosUtil
