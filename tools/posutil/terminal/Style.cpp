// SPDX-License-Identifier: MIT
#include "terminal/Style.h"

#include <unistd.h>

#include <cstdlib>

namespace PosUtil {

namespace {

constexpr Style kColours = {.fKey = "\033[34m",
                            .fString = "\033[32m",
                            .fNumber = "\033[36m",
                            .fNote = "\033[2m",
                            .fError = "\033[1;31m",
                            .fWarning = "\033[1;35m",
                            .fCaret = "\033[1;32m",
                            .fPlain = "\033[0m"};

bool WantsColours(int descriptor) {
  const char* const noColor = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return !(noColor && *noColor) && terminal && std::string_view(terminal) != "dumb" &&
         ::isatty(descriptor);
}

bool IsCaret(std::string_view line) {
  return line.ends_with('^') && line.find_first_not_of(' ') == line.size() - 1;
}

}  // namespace

Style Style::For(int descriptor, ColourMode mode) {
  const bool isWanted =
      mode == ColourMode::kAlways || (mode == ColourMode::kAuto && WantsColours(descriptor));
  return isWanted ? kColours : Style();
}

std::string Style::Message(std::string_view text, const char* colour, Lines lines) const {
  if (!HasColours()) return std::string(text);
  std::string out;
  for (bool isFirst = true;; isFirst = false) {
    const std::string_view line = text.substr(0, text.find('\n'));
    const bool isCaret = IsCaret(line);
    const bool isColoured = isCaret || isFirst || lines == Lines::kAll;
    if (isColoured) out += isCaret ? fCaret : colour;
    out += line;
    if (isColoured) out += fPlain;
    if (line.size() == text.size()) return out;
    out += '\n';
    text.remove_prefix(line.size() + 1);
  }
}

}  // namespace PosUtil
