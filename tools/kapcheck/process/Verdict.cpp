// SPDX-License-Identifier: MIT
#include "process/Verdict.h"

#include <cstring>
#include <sstream>

namespace KAPCheck {

namespace {

std::string NoEndWithin(double seconds) {
  std::ostringstream text;
  text << "does not end within " << seconds << (seconds == 1 ? " second" : " seconds");
  return text.str();
}

}  // namespace

std::string Misbehaviour(const Ending& ending, double limit) {
  switch (ending.fWay) {
    case Ending::Way::kTimeLimit:
      return NoEndWithin(limit);
    case Ending::Way::kManyTimeLimits:
      return NoEndWithin(kMostTimeLimits * limit) + ", although none of its steps takes long";
    case Ending::Way::kSignal:
      return std::string("crashes: ") + ::strsignal(ending.fNumber);
    case Ending::Way::kExit:
      break;
  }
  if (ending.fNumber == 0) return "";
  if (ending.fNumber == kExitWithoutMessages) return "closes descriptors that are not its own";
  return "ends the process with status " + std::to_string(ending.fNumber);
}

std::string EndWithoutVerdict(const Ending& ending, double limit) {
  const std::string text = Misbehaviour(ending, limit);
  return text.empty() ? "ends the process with status 0" : text;
}

}  // namespace KAPCheck
