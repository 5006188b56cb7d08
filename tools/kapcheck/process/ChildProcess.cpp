// SPDX-License-Identifier: MIT
#include "process/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <random>
#include <system_error>

#include "files/Descriptor.h"
#include "process/Descendants.h"

namespace KAPCheck {

namespace {

using Clock = std::chrono::steady_clock;
using PosUtil::Descriptor;

constexpr std::size_t kMostOutput = 64 << 10;
constexpr std::size_t kMostMessages = 16 << 20;

// A low one, which every limit of open files allows.
constexpr int kMessageDescriptor = 3;
// Tells a child process that it is one: "PARENT TOKEN". A message starts with the token, so that
// nothing else that is written to the descriptor counts as one.
constexpr char kChildVariable[] = "KAPCHECK_CHILD";

volatile std::sig_atomic_t gInterrupt = 0;

[[noreturn]] void ThrowError(int error, const char* what) {
  throw std::system_error(error, std::generic_category(), what);
}
void Expect(int error) {
  if (error != 0) ThrowError(error, "cannot start a process");
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

struct Actions {
  Actions() { Expect(posix_spawn_file_actions_init(&fActions)); }
  ~Actions() { posix_spawn_file_actions_destroy(&fActions); }
  Actions(const Actions&) = delete;
  Actions& operator=(const Actions&) = delete;
  posix_spawn_file_actions_t fActions;
};

struct Attributes {
  Attributes() { Expect(posix_spawnattr_init(&fAttributes)); }
  ~Attributes() { posix_spawnattr_destroy(&fAttributes); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  posix_spawnattr_t fAttributes;
};

// The loader takes an empty path for the working folder, too.
std::string AbsolutePaths(std::string_view paths) {
  std::string all;
  for (std::size_t begin = 0; begin <= paths.size();) {
    const std::size_t end = std::min(paths.find_first_of(":;", begin), paths.size());
    const std::filesystem::path one = paths.substr(begin, end - begin);
    all += (begin == 0 ? "" : ":") + (std::filesystem::current_path() / one).string();
    begin = end + 1;
  }
  return all;
}

std::vector<std::string> EnvironmentFor(const std::string& folder, const std::string& token) {
  constexpr std::string_view kPaths = "LD_LIBRARY_PATH=";
  std::vector<std::string> environment = {
      "TMPDIR=" + folder,
      std::string(kChildVariable) + '=' + std::to_string(::getpid()) + ' ' + token};
  for (char** each = environ; *each; ++each) {
    const std::string_view entry = *each;
    if (entry.starts_with("TMPDIR=") || entry.starts_with("KAPHOST_DEBUG=")) continue;
    if (entry.starts_with(kPaths)) {
      environment.push_back(std::string(kPaths) + AbsolutePaths(entry.substr(kPaths.size())));
    } else {
      environment.emplace_back(entry);
    }
  }
  return environment;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

pid_t Start(std::vector<std::string> arguments, const std::string& folder, const std::string& token,
            const Pipe& out, const Pipe& errors, const Pipe& messages) {
  Actions actions;
  posix_spawn_file_actions_t* const all = &actions.fActions;
  Expect(posix_spawn_file_actions_addopen(all, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
  Expect(posix_spawn_file_actions_adddup2(all, out.fWriter.Get(), STDOUT_FILENO));
  Expect(posix_spawn_file_actions_adddup2(all, errors.fWriter.Get(), STDERR_FILENO));
  Expect(posix_spawn_file_actions_adddup2(all, messages.fWriter.Get(), kMessageDescriptor));
  Expect(posix_spawn_file_actions_addchdir_np(all, folder.c_str()));
  Attributes attributes;
  // The leader of a session cannot leave its process group.
  Expect(posix_spawnattr_setflags(&attributes.fAttributes, POSIX_SPAWN_SETSID));

  std::vector<std::string> environment = EnvironmentFor(folder, token);
  pid_t process = 0;
  Expect(posix_spawn(&process, "/proc/self/exe", all, &attributes.fAttributes,
                     Pointers(arguments).data(), Pointers(environment).data()));
  return process;
}

// Keeps the beginning of what a pipe delivers and drops the rest.
class Reading {
 public:
  Reading(Pipe& pipe, std::string& kept, std::size_t most) : fPipe(pipe), fKept(kept), fMost(most) {
    ::fcntl(fPipe.fReader.Get(), F_SETFL, O_NONBLOCK);
  }
  int Get() const { return fIsOpen ? fPipe.fReader.Get() : -1; }

  // Reads what is there now. Returns whether there was anything.
  bool Take() {
    std::array<char, 4096> block;
    bool hasRead = false;
    while (fIsOpen) {
      const ssize_t count = ::read(fPipe.fReader.Get(), block.data(), block.size());
      if (count > 0) {
        hasRead = true;
        const auto room = fMost - std::min(fMost, fKept.size());
        fKept.append(block.data(), std::min(room, static_cast<std::size_t>(count)));
        if (room == 0) break;  // a flood must not keep the clock from being looked at
      } else {
        if (count == 0) fIsOpen = false;
        if (count == 0 || errno != EINTR) break;
      }
    }
    return hasRead;
  }

 private:
  Pipe& fPipe;
  std::string& fKept;
  std::size_t fMost;
  bool fIsOpen = true;
};

// The lines that start with the token, without it.
std::string Messages(const std::string& text, const std::string& token) {
  std::string messages;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view line = std::string_view(text).substr(begin, end - begin);
    if (line.starts_with(token)) messages.append(line.substr(token.size())) += '\n';
    begin = end + 1;
  }
  return messages;
}

std::string NewToken() {
  std::random_device random;
  return std::to_string(random()) + std::to_string(random());
}

// Follows the process until it ends or a limit runs out.
void Follow(pid_t process, Clock::time_point start, std::array<Reading, 3>& readings,
            std::chrono::milliseconds limit, Ending& ending) {
  // Wakes the poll when the process ends. Where there is none, the poll ends now and then.
  const Descriptor end(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
  auto heard = Clock::now();
  for (;;) {
    std::array<pollfd, 4> polls;
    for (std::size_t i = 0; i < 3; ++i) polls[i] = {readings[i].Get(), POLLIN, 0};
    polls[3] = {end.Get(), POLLIN, 0};
    // The process may end while one of its own children keeps the pipes open.
    ::poll(polls.data(), polls.size(), 20);
    const bool hasEnded = HasEnded(process);
    readings[0].Take();
    readings[1].Take();
    const auto now = Clock::now();
    if (readings[2].Take()) heard = now;
    if (hasEnded || gInterrupt != 0) break;
    if (now - heard >= limit) ending.fWay = Ending::Way::kTimeLimit;
    if (now - start >= kMostTimeLimits * limit) ending.fWay = Ending::Way::kManyTimeLimits;
    if (ending.fWay != Ending::Way::kExit) break;
  }
  ending.fSeconds = std::chrono::duration<double>(Clock::now() - start).count();
}

// What a child process knows about itself.
class Child {
 public:
  Child() {
    const char* const text = std::getenv(kChildVariable);
    if (!text) return;
    char* end = nullptr;
    const long parent = std::strtol(text, &end, 10);
    fToken = *end == ' ' ? end + 1 : "";
    ::unsetenv(kChildVariable);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(kExitWithoutMessages);
    // A component that takes all memory should not take other processes along.
    std::ofstream("/proc/self/oom_score_adj") << 1000;
    ::fcntl(kMessageDescriptor, F_SETFD, FD_CLOEXEC);
    fIsChild = ::fstat(kMessageDescriptor, &fPipe) == 0;
  }

  bool IsChild() const { return fIsChild; }

  // Text without a line end may have been written before.
  void Write(const std::string& line) {
    const std::string text = '\n' + fToken + line + '\n';
    const std::lock_guard lock(fMutex);
    for (std::size_t sent = 0; sent < text.size();) {
      // Another file may have got the number of a closed descriptor.
      struct stat now = {};
      const bool isOpen = ::fstat(kMessageDescriptor, &now) == 0 && now.st_ino == fPipe.st_ino &&
                          now.st_dev == fPipe.st_dev;
      const ssize_t count =
          isOpen ? ::write(kMessageDescriptor, text.data() + sent, text.size() - sent) : -1;
      if (count < 0 && isOpen && errno == EINTR) continue;
      if (count <= 0) ::_exit(kExitWithoutMessages);
      sent += static_cast<std::size_t>(count);
    }
  }

 private:
  bool fIsChild = false;
  std::string fToken;
  struct stat fPipe = {};
  std::mutex fMutex;
};

// Never destroyed: messages are sent while static objects are.
Child& TheChild() {
  static auto* const child = new Child;
  return *child;
}

}  // namespace

void CatchInterrupts() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action.sa_handler = [](int number) { gInterrupt = number; };
    ::sigaction(signal, &action, nullptr);
  }
}

Ending RunAgain(const std::vector<std::string>& arguments, const std::string& folder,
                std::chrono::milliseconds limit) {
  Ending ending;
  Pipe out, errors, messages;
  const std::string token = NewToken();
  Descendants descendants;
  const auto start = Clock::now();
  const pid_t process = Start(arguments, folder, token, out, errors, messages);
  for (Pipe* pipe : {&out, &errors, &messages}) pipe->fWriter = Descriptor();
  std::array<Reading, 3> readings = {Reading{out, ending.fOutput, kMostOutput},
                                     Reading{errors, ending.fErrors, kMostOutput},
                                     Reading{messages, ending.fMessages, kMostMessages}};
  Follow(process, start, readings, limit, ending);
  ending.fMessages = Messages(ending.fMessages, token);
  if (ending.fWay == Ending::Way::kExit && gInterrupt == 0) {
    ending.fLeft = descendants.CountLeft(process);
  }
  const int status = descendants.End(process);
  if (gInterrupt != 0) throw Interrupted(gInterrupt);
  if (ending.fWay != Ending::Way::kExit) return ending;
  if (WIFSIGNALED(status)) ending.fWay = Ending::Way::kSignal;
  ending.fNumber = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
  return ending;
}

bool IsChild() { return TheChild().IsChild(); }

void WriteMessage(const std::string& line) { TheChild().Write(line); }

}  // namespace KAPCheck
