#pragma once

#include <string>
#include <vector>

#include "base/Printable.h"

namespace PosUtil {

enum class Messages : bool { kUnwanted, kWanted };

// The result of a check. A document that is not valid may have no message; a valid one has none.
struct Verdict {
  bool fIsValid = false;
  std::vector<std::string> fMessages;
};

// A message as the user sees it. `name` is the name of the file.
inline std::string MessageLine(const std::string& name, const std::string& message) {
  std::string line = Printable(name) + ": ";
  AppendPrintable(line, message);
  return line;
}

}  // namespace PosUtil
