// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace KAPCheck {

// What the process of a component's test sends to the process that started it. Apart from
// process/Messages.h, because JSON takes long to compile.

// What the test does next: if the process crashes or hangs, the last step is where.
void SendStep(const std::string& step);
// What the user should know about a test, whatever its result is.
void SendNote(const std::string& note);
void SendPass();
void SendFailure(const std::string& reason);

// What arrived.
struct Progress {
  std::string fStep;  // the last one
  std::string fNote;
  bool fHasPassed = false;
  bool fHasFailed = false;  // counts more than a pass before it
  std::string fReason;
};
Progress ParseProgress(const std::string& text);

}  // namespace KAPCheck
