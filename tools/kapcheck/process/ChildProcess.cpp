// SPDX-License-Identifier: MIT
#include "process/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include "files/Descriptor.h"

extern char** environ;

namespace KAPCheck {

namespace {

using Clock = std::chrono::steady_clock;
using PosUtil::Descriptor;

constexpr std::size_t kMostOutput = 64 << 10;
constexpr std::size_t kMostMessages = 16 << 20;

[[noreturn]] void ThrowError(int error, const char* what) {
  throw std::system_error(error, std::generic_category(), what);
}

struct Pipe {
  Pipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) ThrowError(errno, "pipe");
    fReader = Descriptor(ends[0]);
    fWriter = Descriptor(ends[1]);
  }
  Descriptor fReader;
  Descriptor fWriter;
};

class Actions {
 public:
  Actions() { posix_spawn_file_actions_init(&fActions); }
  ~Actions() { posix_spawn_file_actions_destroy(&fActions); }
  Actions(const Actions&) = delete;
  Actions& operator=(const Actions&) = delete;
  posix_spawn_file_actions_t* Get() { return &fActions; }

 private:
  posix_spawn_file_actions_t fActions;
};

pid_t Start(const std::vector<std::string>& arguments, const std::string& folder, const Pipe& out,
            const Pipe& errors, const Pipe& messages) {
  Actions actions;
  posix_spawn_file_actions_addopen(actions.Get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(actions.Get(), out.fWriter.Get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(actions.Get(), errors.fWriter.Get(), STDERR_FILENO);
  posix_spawn_file_actions_adddup2(actions.Get(), messages.fWriter.Get(), kMessageDescriptor);
  posix_spawn_file_actions_addchdir_np(actions.Get(), folder.c_str());

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);

  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  std::string place = "TMPDIR=" + folder;
  std::vector<char*> environment;
  for (char** each = environ; *each; ++each) {
    if (std::string_view(*each).substr(0, 7) != "TMPDIR=") environment.push_back(*each);
  }
  environment.push_back(place.data());
  environment.push_back(nullptr);

  pid_t process = 0;
  const int error = posix_spawn(&process, "/proc/self/exe", actions.Get(), &attributes, argv.data(),
                                environment.data());
  posix_spawnattr_destroy(&attributes);
  if (error != 0) ThrowError(error, "cannot start a process");
  return process;
}

// Keeps the beginning of what a pipe delivers and drops the rest.
class Reading {
 public:
  Reading(Pipe& pipe, std::string& kept, std::size_t most) : fPipe(pipe), fKept(kept), fMost(most) {
    ::fcntl(fPipe.fReader.Get(), F_SETFL, O_NONBLOCK);
  }
  int Get() const { return fIsOpen ? fPipe.fReader.Get() : -1; }

  // Reads what is there now.
  void Take() {
    std::array<char, 4096> block;
    while (fIsOpen) {
      const ssize_t count = ::read(fPipe.fReader.Get(), block.data(), block.size());
      if (count > 0) {
        const auto room = fMost - std::min(fMost, fKept.size());
        fKept.append(block.data(), std::min(room, static_cast<std::size_t>(count)));
        if (room == 0) return;  // a flood must not keep the clock from being looked at
      } else {
        if (count == 0) fIsOpen = false;
        if (count == 0 || errno != EINTR) return;
      }
    }
  }

 private:
  Pipe& fPipe;
  std::string& fKept;
  std::size_t fMost;
  bool fIsOpen = true;
};

// Whether the process has ended; it stays a zombie, so that its number is not given to another.
bool HasEnded(pid_t process) {
  siginfo_t info = {};
  return ::waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         info.si_pid == process;
}

}  // namespace

Ending RunAgain(const std::vector<std::string>& arguments, const std::string& folder,
                std::chrono::milliseconds limit) {
  Ending ending;
  Pipe out, errors, messages;
  const auto start = Clock::now();
  const pid_t process = Start(arguments, folder, out, errors, messages);
  for (Pipe* pipe : {&out, &errors, &messages}) pipe->fWriter = Descriptor();
  Reading readings[] = {{out, ending.fOutput, kMostOutput},
                        {errors, ending.fErrors, kMostOutput},
                        {messages, ending.fMessages, kMostMessages}};

  bool isOver = false;
  while (!isOver && Clock::now() - start < limit) {
    pollfd polls[] = {{readings[0].Get(), POLLIN, 0},
                      {readings[1].Get(), POLLIN, 0},
                      {readings[2].Get(), POLLIN, 0}};
    // The process may end while one of its own children keeps the pipes open.
    ::poll(polls, 3, 20);
    isOver = HasEnded(process);
    for (Reading& reading : readings) reading.Take();
  }
  ending.fSeconds = std::chrono::duration<double>(Clock::now() - start).count();

  ::kill(-process, SIGKILL);
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  if (!isOver) {
    ending.fWay = Ending::Way::kTimeLimit;
  } else if (WIFSIGNALED(status)) {
    ending.fWay = Ending::Way::kSignal;
    ending.fNumber = WTERMSIG(status);
  } else {
    ending.fNumber = WEXITSTATUS(status);
  }
  return ending;
}

void EndWithParent() { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }

}  // namespace KAPCheck
