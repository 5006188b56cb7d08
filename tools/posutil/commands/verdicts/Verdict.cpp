#include "commands/verdicts/Verdict.h"

#include "base/Printable.h"

namespace PosUtil {

std::string MessageLine(const std::string& name, const std::string& message) {
  std::string line = Printable(name) + ": ";
  AppendPrintable(line, message);
  return line;
}

}  // namespace PosUtil
