// SPDX-License-Identifier: MIT
#include "base/ValuePath.h"

namespace PosUtil {

void AppendKey(std::string& path, std::string_view key) {
  if (!path.empty()) path += '.';
  path += key;
}

void AppendIndex(std::string& path, std::size_t index) {
  path += '[' + std::to_string(index) + ']';
}

std::string PathText(const ValuePath& path) {
  std::string text;
  for (const PathStep& step : path) {
    step.fIsIndex ? AppendIndex(text, step.fIndex) : AppendKey(text, step.fKey);
  }
  return text;
}

std::string JsonPointer(const ValuePath& path) {
  std::string pointer;
  for (const PathStep& step : path) {
    pointer += '/';
    if (step.fIsIndex) {
      pointer += std::to_string(step.fIndex);
      continue;
    }
    for (const char c : step.fKey) {
      if (c == '~') {
        pointer += "~0";
      } else if (c == '/') {
        pointer += "~1";
      } else {
        pointer += c;
      }
    }
  }
  return pointer;
}

}  // namespace PosUtil
