// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <exception>
#include <string>
#include <vector>

namespace KAPCheck {

// How a child process ended and what it wrote. Of each output, at most 64 KiB are kept.
struct Ending {
  enum class Way {
    kExit,
    kSignal,
    kTimeLimit,      // no message within the limit
    kManyTimeLimits  // messages, but no end
  };
  Way fWay = Way::kExit;
  int fNumber = 0;  // the exit status or the signal
  double fSeconds = 0;
  std::size_t fLeft = 0;  // how many processes it left running, when it exited
  std::string fMessages;  // a message in each line
  std::string fOutput;
  std::string fErrors;
};

// The exit status of a child process whose messages no longer arrive, because something has closed
// its descriptors.
inline constexpr int kExitWithoutMessages = 97;
// A child process that goes on sending messages may take this many time limits.
inline constexpr int kMostTimeLimits = 20;

// A signal asks this process to end (CatchInterrupts).
class Interrupted : public std::exception {
 public:
  explicit Interrupted(int signal) : fSignal(signal) {}
  const char* what() const noexcept override { return "interrupted"; }
  int Signal() const { return fSignal; }

 private:
  int fSignal;
};

// From now on, RunAgain throws Interrupted after SIGINT, SIGTERM or SIGHUP.
void CatchInterrupts();

// Runs this program again with other arguments, in a session of its own, with the folder as its
// working and temporary folder. It is killed when it has sent no message for as long as the time
// limit. After its end, the processes that it left are killed. Its standard input is empty;
// KAPHOST_DEBUG is unset, and relative paths in LD_LIBRARY_PATH become absolute. Throws
// std::system_error when no process can be started.
Ending RunAgain(const std::vector<std::string>& arguments, const std::string& folder,
                std::chrono::milliseconds limit);

// Whether RunAgain has started this process. If so, the first call prepares it: it is killed when
// the process that started it ends.
bool IsChild();

// Sends a message to the process that started this one; `line` has no line end. Ends this process
// when the message cannot arrive.
void WriteMessage(const std::string& line);

}  // namespace KAPCheck
