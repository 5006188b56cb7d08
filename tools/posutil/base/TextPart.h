#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace PosUtil {

// Where in lines a text stands whose beginning is no longer at hand. Columns are characters of
// UTF-8.
struct LineCounter {
  std::size_t fLines = 0;    // that have ended
  std::size_t fColumns = 0;  // behind the last of them

  void Add(std::string_view bytes) {
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    fLines += static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n'));
    const std::size_t end = bytes.rfind('\n');
    if (end != std::string_view::npos) {
      fColumns = 0;
      bytes.remove_prefix(end + 1);
    }
    fColumns += static_cast<std::size_t>(std::count_if(bytes.begin(), bytes.end(), isFirstByte));
  }
};

// A part of a text: what stands in front of it, and its bytes.
struct TextPart {
  LineCounter fBefore;
  std::string_view fBytes;
};

}  // namespace PosUtil
