// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PosUtil {

// A step from a container to a value in it.
struct PathStep {
  explicit PathStep(std::size_t index) : fIsIndex(true), fIndex(index) {}
  explicit PathStep(std::string key) : fIsIndex(false), fKey(std::move(key)) {}

  bool fIsIndex;
  std::size_t fIndex = 0;
  std::string fKey;
};
using ValuePath = std::vector<PathStep>;

// Append a segment to a path in the library's notation: a.b[2].c
void AppendKey(std::string& path, std::string_view key);
void AppendIndex(std::string& path, std::size_t index);

// The path in the library's notation.
std::string PathText(const ValuePath& path);
// The path as a JSON Pointer (RFC 6901).
std::string JsonPointer(const ValuePath& path);

}  // namespace PosUtil
