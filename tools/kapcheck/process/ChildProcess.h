// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace KAPCheck {

// The descriptor to which a child process writes its messages (process/Messages.h).
inline constexpr int kMessageDescriptor = 200;

// How a child process ended and what it wrote. Of each output, at most 64 KiB are kept.
struct Ending {
  enum class Way { kExit, kSignal, kTimeLimit };
  Way fWay = Way::kExit;
  int fNumber = 0;  // the exit status or the signal
  double fSeconds = 0;
  std::string fMessages;
  std::string fOutput;
  std::string fErrors;
};

// Runs this program again with other arguments, in a process group of its own, with the folder as
// its working and temporary folder. After the time limit, or when the process has ended, the whole
// group is killed. Its standard input is empty. Throws std::system_error when no process can be
// started.
Ending RunAgain(const std::vector<std::string>& arguments, const std::string& folder,
                std::chrono::milliseconds limit);

// Called in such a process: it is killed when the one that started it ends, by an interrupt say.
void EndWithParent();

}  // namespace KAPCheck
