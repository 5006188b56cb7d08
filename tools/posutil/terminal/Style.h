#pragma once

namespace PosUtil {

// Escape sequences for coloured text; all empty where there are to be no colours.
struct Style {
  const char* fKey = "";
  const char* fString = "";
  const char* fNumber = "";
  const char* fNote = "";
  const char* fError = "";
  const char* fPlain = "";

  // Colours when the descriptor is a terminal that knows them and NO_COLOR is not set.
  static Style For(int descriptor);
};

}  // namespace PosUtil
