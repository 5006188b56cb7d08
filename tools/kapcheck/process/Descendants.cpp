// SPDX-License-Identifier: MIT
#include "process/Descendants.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

namespace KAPCheck {

namespace {

// A process that is on its way to its end is not left.
constexpr std::chrono::milliseconds kGrace{200};

std::vector<pid_t> Children() {
  std::ifstream file("/proc/self/task/" + std::to_string(::getpid()) + "/children");
  std::vector<pid_t> children;
  for (pid_t process; file >> process;) children.push_back(process);
  return children;
}

int WaitFor(pid_t process) {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

bool HasEnded(pid_t process) {
  siginfo_t info = {};
  return ::waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         info.si_pid == process;
}

Descendants::Descendants() : fBefore(Children()) { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }

Descendants::~Descendants() { ::prctl(PR_SET_CHILD_SUBREAPER, 0); }

std::size_t Descendants::CountLeft(pid_t child) const {
  const auto end = std::chrono::steady_clock::now() + kGrace;
  for (;;) {
    const std::vector<pid_t> others = Others(child);
    const auto running = std::count_if(others.begin(), others.end(),
                                       [](pid_t process) { return !HasEnded(process); });
    if (running == 0 || std::chrono::steady_clock::now() > end) {
      return static_cast<std::size_t>(running);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

int Descendants::End(pid_t child) {
  ::kill(-child, SIGKILL);
  ::kill(child, SIGKILL);
  const int status = WaitFor(child);
  // Their own children come to this process when they end.
  for (std::vector<pid_t> others; !(others = Others(child)).empty();) {
    for (const pid_t process : others) ::kill(process, SIGKILL);
    for (const pid_t process : others) WaitFor(process);
  }
  return status;
}

std::vector<pid_t> Descendants::Others(pid_t child) const {
  std::vector<pid_t> others = Children();
  std::erase_if(others, [&](pid_t process) {
    return process == child || std::find(fBefore.begin(), fBefore.end(), process) != fBefore.end();
  });
  return others;
}

}  // namespace KAPCheck
