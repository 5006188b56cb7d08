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

bool IsDeepKey(std::string_view key, bool isFirst) {
  if (isFirst && (key.empty() || key.front() == '/')) return false;
  return key.find_first_of(".[") == std::string_view::npos;
}

void AppendPointerKey(std::string& pointer, std::string_view key) {
  pointer += '/';
  for (const char c : key) {
    if (c == '~') {
      pointer += "~0";
    } else if (c == '/') {
      pointer += "~1";
    } else {
      pointer += c;
    }
  }
}

void AppendPointerIndex(std::string& pointer, std::size_t index) {
  pointer += '/' + std::to_string(index);
}

std::string JsonPointer(const ValuePath& path) {
  std::string pointer;
  for (const PathStep& step : path) {
    step.fIsIndex ? AppendPointerIndex(pointer, step.fIndex) : AppendPointerKey(pointer, step.fKey);
  }
  return pointer;
}

std::string UsablePath(const ValuePath& path) {
  for (const PathStep& step : path) {
    if (!step.fIsIndex && !IsDeepKey(step.fKey, &step == path.data())) return JsonPointer(path);
  }
  return PathText(path);
}

}  // namespace PosUtil
