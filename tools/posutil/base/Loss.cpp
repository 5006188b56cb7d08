// SPDX-License-Identifier: MIT
#include "base/Loss.h"

namespace PosUtil {

std::vector<std::string> Losses::TakeLines(const char* severity) {
  std::vector<std::string> lines;
  for (Entry& entry : fEntries) {
    if (entry.fCount == 0) continue;
    std::string line = entry.fFirst.fPlace + ": " + severity + entry.fFirst.fText;
    if (entry.fCount > 1) line += " (" + std::to_string(entry.fCount - 1) + " more)";
    lines.push_back(std::move(line));
    entry = {};
  }
  return lines;
}

}  // namespace PosUtil
