#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/Failure.h"

namespace PosUtil {

// A format cannot hold a value. Code that knows the document and the path turns it into a Failure.
class ValueError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;

  // The failure to show: the name of the document, the path to the value, the reason.
  Failure At(const std::string& document, const std::string& path) const;
};

// Append a segment to such a path, in the library's notation: a.b[2].c
inline void AppendKey(std::string& path, std::string_view key) {
  if (!path.empty()) path += '.';
  path += key;
}
inline void AppendIndex(std::string& path, std::size_t index) {
  path += '[' + std::to_string(index) + ']';
}

}  // namespace PosUtil
