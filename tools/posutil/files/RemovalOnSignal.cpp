// SPDX-License-Identifier: MIT
#include "files/RemovalOnSignal.h"

#include <unistd.h>

#include <algorithm>
#include <climits>

namespace PosUtil {

namespace {

// A signal handler reaches only globals. No name, no removal.
int gFolder = -1;
char gName[NAME_MAX + 1] = "";

// SA_RESETHAND has restored the default action, so the second signal ends the process.
void Remove(int signal) {
  if (gName[0]) ::unlinkat(gFolder, gName, 0);
  ::raise(signal);
}

bool EndsProcess(int signal) {
  constexpr int kOthers[] = {SIGKILL, SIGSTOP, SIGCHLD, SIGCONT, SIGURG,
                             SIGTSTP, SIGTTIN, SIGTTOU, SIGWINCH};
  return std::find(std::begin(kOthers), std::end(kOthers), signal) == std::end(kOthers);
}

void Handle(int signal) {
  struct sigaction action {};
  if (::sigaction(signal, nullptr, &action) != 0) return;  // reserved for the C library
  // An ignored signal stays ignored, as nohup wants it.
  if (action.sa_handler != SIG_DFL) return;
  action.sa_handler = &Remove;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

BlockedSignals::BlockedSignals() {
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_BLOCK, &all, &fBefore);
}

BlockedSignals::~BlockedSignals() { ::sigprocmask(SIG_SETMASK, &fBefore, nullptr); }

RemovalOnSignal::RemovalOnSignal(int folder, const std::string& name) {
  const BlockedSignals blocked;
  gFolder = folder;
  gName[name.copy(gName, sizeof gName - 1)] = '\0';
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (EndsProcess(signal)) Handle(signal);
  }
}

RemovalOnSignal::~RemovalOnSignal() { gName[0] = '\0'; }

}  // namespace PosUtil
