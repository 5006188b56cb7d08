// SPDX-License-Identifier: MIT
#include "terminal/Style.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace PosUtil {

Style Style::For(int descriptor) {
  const char* const noColor = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  if ((noColor && *noColor) || !terminal || std::string_view(terminal) == "dumb" ||
      !::isatty(descriptor)) {
    return {};
  }
  return {.fKey = "\033[34m",
          .fString = "\033[32m",
          .fNumber = "\033[36m",
          .fNote = "\033[2m",
          .fError = "\033[1;31m",
          .fPlain = "\033[0m"};
}

}  // namespace PosUtil
