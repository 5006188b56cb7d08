// SPDX-License-Identifier: MIT
#pragma once

namespace PosUtil {

// Escape sequences for coloured text. All are empty where there are no colours.
struct Style {
  const char* fKey = "";
  const char* fString = "";
  const char* fNumber = "";
  const char* fNote = "";
  const char* fError = "";
  const char* fPlain = "";

  // Has colours if the descriptor is a terminal that supports them and NO_COLOR is not set.
  static Style For(int descriptor);
};

}  // namespace PosUtil
