// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace PosUtil {

// Counts the lines and columns of a text that is no longer in memory. A column is a UTF-8
// character.
struct LineCounter {
  std::size_t fLines = 0;    // complete ones
  std::size_t fColumns = 0;  // after the last complete line

  void Add(std::string_view bytes);
};

// Counts from 1. A column is a UTF-8 character; a tab is one.
struct TextPlace {
  std::size_t fLine;
  std::size_t fColumn;
};

// A part of a text: its bytes and the position of the first one.
struct TextPart {
  LineCounter fBefore;
  std::string_view fBytes;
};

// The place of a byte of the part; past the end means the end.
inline TextPlace PlaceIn(const TextPart& part, std::size_t offset) {
  LineCounter counter = part.fBefore;
  counter.Add(part.fBytes.substr(0, std::min(offset, part.fBytes.size())));
  return {counter.fLines + 1, counter.fColumns + 1};
}

}  // namespace PosUtil
