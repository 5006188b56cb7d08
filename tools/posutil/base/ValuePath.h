// SPDX-License-Identifier: MIT
#pragma once

#include <compare>
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

  friend auto operator<=>(const PathStep&, const PathStep&) = default;
};
using ValuePath = std::vector<PathStep>;

// Append a segment to a path in the library's notation: a.b[2].c
void AppendKey(std::string& path, std::string_view key);
void AppendIndex(std::string& path, std::size_t index);

// Returns whether the library's notation can name the key. It cannot name one that has a "." or a
// "[", and at the start of a path neither an empty one nor one that looks like a JSON Pointer.
bool IsDeepKey(std::string_view key, bool isFirst);
// Append a step to a JSON Pointer (RFC 6901).
void AppendPointerKey(std::string& pointer, std::string_view key);
void AppendPointerIndex(std::string& pointer, std::size_t index);

// The path in the library's notation.
std::string PathText(const ValuePath& path);
// The path as a JSON Pointer (RFC 6901).
std::string JsonPointer(const ValuePath& path);
// The path as a user can give it: in the library's notation if that can name all keys, else as a
// JSON Pointer.
std::string UsablePath(const ValuePath& path);

}  // namespace PosUtil
