// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace PosUtil {

enum class ColourMode { kAuto, kAlways, kNever };

// Escape sequences for coloured text. All are empty where there are no colours.
struct Style {
  const char* fKey = "";
  const char* fString = "";
  const char* fNumber = "";
  const char* fNote = "";
  const char* fError = "";
  const char* fWarning = "";
  const char* fCaret = "";
  const char* fPlain = "";

  // With kAuto, has colours if the descriptor is a terminal that supports them and NO_COLOR is not
  // set.
  static Style For(int descriptor, ColourMode mode = ColourMode::kAuto);

  bool HasColours() const { return *fPlain; }

  // The lines of a message, without the last line end: the first one, or with `all` each one, in
  // `colour`; a caret that stands alone in its line in the colour of carets.
  enum class Lines : bool { kFirst, kAll };
  std::string Message(std::string_view text, const char* colour, Lines lines) const;
};

}  // namespace PosUtil
