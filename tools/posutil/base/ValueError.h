#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace PosUtil {

// Appends a segment to a path, as property objects write it: a.b[2].c
inline void AppendKey(std::string& path, std::string_view key) {
  if (!path.empty()) path += '.';
  path += key;
}
inline void AppendIndex(std::string& path, std::size_t index) {
  path += '[' + std::to_string(index) + ']';
}

}  // namespace PosUtil
