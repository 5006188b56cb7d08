// SPDX-License-Identifier: MIT
#include "trace/OutputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <iostream>
#include <map>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace KAPHost {

namespace {

// A write to a closed pipe sends a signal to the thread, whose handling is the program's. While an
// object lives, the signal waits, and what has come meanwhile is taken at the end.
class NoPipeSignal {
 public:
  NoPipeSignal() noexcept {
    sigset_t waiting;
    ::sigpending(&waiting);
    fWaitedBefore = ::sigismember(&waiting, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &Signal(), &fMask);
  }
  NoPipeSignal(const NoPipeSignal&) = delete;
  NoPipeSignal& operator=(const NoPipeSignal&) = delete;
  ~NoPipeSignal() {
    constexpr timespec kNow = {0, 0};
    if (!fWaitedBefore) ::sigtimedwait(&Signal(), nullptr, &kNow);
    ::pthread_sigmask(SIG_SETMASK, &fMask, nullptr);
  }

 private:
  static const sigset_t& Signal() noexcept {
    static const sigset_t signal = [] {
      sigset_t set;
      ::sigemptyset(&set);
      ::sigaddset(&set, SIGPIPE);
      return set;
    }();
    return signal;
  }

  sigset_t fMask{};
  bool fWaitedBefore = false;
};

std::string WithProcess(std::string path, pid_t process) {
  const std::string number = std::to_string(process);
  for (std::size_t at = 0; (at = path.find("%p", at)) != std::string::npos; at += number.size()) {
    path.replace(at, 2, number);
  }
  return path;
}

std::string OfChild(const std::string& path, pid_t process) {
  const std::string ending = path.ends_with(".json") ? ".json" : "";
  return path.substr(0, path.size() - ending.size()) + '.' + std::to_string(process) + ending;
}

// The process that a file belongs to: the first one that asks, and zero before. A child that makes
// a host of its own finds its parent's number.
pid_t& OwnerOf(const std::string& path) {
  static auto* const owners = new std::map<std::string, pid_t>;
  static auto* const mutex = new std::mutex;
  const std::lock_guard lock(*mutex);
  return (*owners)[path];
}

std::string CannotWrite(const std::string& path, int number) {
  return "cannot write \"" + path + "\": " + std::generic_category().message(number);
}

}  // namespace

OutputFile::OutputFile(const std::string& path,
                       std::function<void(const std::string& message)> onLost)
    : fPath(path), fOnLost(std::move(onLost)), fProcess(::getpid()) {
  std::string own = WithProcess(path, fProcess);
  if (const pid_t owner = OwnerOf(own); owner != 0 && owner != fProcess && path != "-") {
    own = OfChild(own, fProcess);
  }
  Open(own);
}

OutputFile::~OutputFile() { Close(); }

void OutputFile::Open(const std::string& path) {
  pid_t& owner = OwnerOf(path);
  const int mode = O_WRONLY | O_CREAT | O_CLOEXEC | (owner == fProcess ? O_APPEND : O_TRUNC);
  const bool isError = path == "-";
  fFile = isError ? ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0) : ::open(path.c_str(), mode, 0666);
  if (fFile < 0) throw std::runtime_error(CannotWrite(path, errno));
  fOwnPath = path;
  struct stat status {};
  ::fstat(fFile, &status);
  fIsPipe = S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode);
  fSizeBefore = owner == fProcess && S_ISREG(status.st_mode) && !isError ? status.st_size : 0;
  owner = fProcess;
}

void OutputFile::Close() noexcept {
  if (fFile >= 0 && ::close(fFile) != 0 && errno != EINTR) Lose(errno);
  fFile = -1;
}

bool OutputFile::IsOwn() const noexcept { return fProcess == ::getpid(); }

bool OutputFile::IsForked() noexcept {
  if (IsOwn()) return false;
  fProcess = ::getpid();
  if (fFile >= 0) ::close(fFile);
  fFile = -1;
  if (fPath == "-") return true;
  try {
    const std::string own = WithProcess(fPath, fProcess);
    Open(own == fOwnPath ? OfChild(own, fProcess) : own);
  } catch (const std::exception&) {
    Lose(errno);
  }
  return true;
}

void OutputFile::RemoveLast(off_t size) noexcept {
  if (::ftruncate(fFile, fSizeBefore - size) == 0) ::lseek(fFile, 0, SEEK_END);
}

bool OutputFile::WaitForPlace(int number) const noexcept {
  if (number == EINTR) return true;
  if (number != EAGAIN) return false;
  pollfd place = {fFile, POLLOUT, 0};
  return ::poll(&place, 1, -1) >= 0 || errno == EINTR;
}

void OutputFile::Write(const std::string& text) noexcept {
  std::size_t written = 0;
  while (fFile >= 0 && written < text.size()) {
    ssize_t size = 0;
    int number = 0;
    const auto write = [&] {
      size = ::write(fFile, text.data() + written, text.size() - written);
      number = errno;
    };
    if (fIsPipe) {
      const NoPipeSignal blocked;
      write();
    } else {
      write();
    }
    if (size >= 0) {
      written += static_cast<std::size_t>(size);
    } else if (!WaitForPlace(number)) {
      ::close(fFile);
      fFile = -1;
      Lose(number);
    }
  }
}

void OutputFile::Lose(int number) noexcept {
  try {
    const std::string message = CannotWrite(fOwnPath, number) + "; the rest is lost";
    fOnLost ? fOnLost(message) : void(std::cerr << "KAP host: " << message << '\n');
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace KAPHost
