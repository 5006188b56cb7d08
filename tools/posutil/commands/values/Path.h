// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace PosUtil {

// A path as a user writes it: a deep path such as a.b[2].c or, if it begins with "/", a JSON
// Pointer (RFC 6901).
//
// Deep paths have the meaning that they have in the library, but for huge indices. It reads them in
// dictionaries only; here an index at the start also leads into an array that is the document, and
// the empty path to a document that is not a dictionary.
class Path {
 public:
  explicit Path(std::string text) : Path(std::move(text), false) {}
  // A JSON Pointer, which leads to the whole document if it is empty.
  static Path Pointer(std::string text) { return {std::move(text), true}; }

  struct Step {
    enum Kind {
      kKey,
      kIndex,
      kEither,  // a pointer's: the container decides
    };
    Kind fKind;
    std::string fText;
  };

  const std::string& Text() const { return fText; }
  // Returns whether the text has the form of a path. A malformed one leads nowhere.
  bool IsWellFormed() const { return fIsWellFormed; }
  // The steps from a document, which may be a dictionary.
  std::vector<Step> StepsFrom(bool isDict) const;

 private:
  Path(std::string text, bool isPointer);
  void ParsePointer();
  void ParseDeep();

  std::string fText;
  std::vector<Step> fSteps;
  bool fIsPointer = false;
  bool fIsWellFormed = true;
};

// Throws Failure with kExitUsage for a path that is not well formed.
void RequireWellFormed(const Path& path);

// The index that a step is in an array of `count` slots, of which it may be past the end; kNoIndex
// for a key. "-", in a pointer, is the end of the array. The library reads the index of a deep path
// modulo 2^32, which would be another value than the path names.
inline constexpr std::size_t kNoIndex = SIZE_MAX;
std::size_t IndexIn(const Path::Step& step, std::size_t count);

}  // namespace PosUtil
