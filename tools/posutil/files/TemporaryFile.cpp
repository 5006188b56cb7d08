#include "files/TemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/Failure.h"
#include "base/Printable.h"

namespace PosUtil {

namespace {

constexpr int kEndings[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

// What a signal must remove; empty for nothing.
char gPath[PATH_MAX] = "";

// The signal's own action is in place again.
void Remove(int signal) {
  ::unlink(gPath);
  ::raise(signal);
}

// Signals wait for as long as there is one.
class Uninterrupted {
 public:
  Uninterrupted() {
    sigset_t endings;
    ::sigemptyset(&endings);
    for (const int each : kEndings) ::sigaddset(&endings, each);
    ::sigprocmask(SIG_BLOCK, &endings, &fBefore);
  }
  Uninterrupted(const Uninterrupted&) = delete;
  Uninterrupted& operator=(const Uninterrupted&) = delete;
  ~Uninterrupted() { ::sigprocmask(SIG_SETMASK, &fBefore, nullptr); }

 private:
  sigset_t fBefore;
};

void RemoveOnSignal(const std::string& path) {
  ::strncpy(gPath, path.c_str(), sizeof gPath - 1);
  for (const int each : kEndings) {
    struct sigaction action {};
    ::sigaction(each, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;  // so it was started, as by nohup
    action.sa_handler = &Remove;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    ::sigaction(each, &action, nullptr);
  }
}

// Hidden, and not too long however long the other name is.
std::string PatternBeside(const std::string& target) {
  const std::size_t folder = target.rfind('/') + 1;  // 0 when there is none
  return target.substr(0, folder) + "." + target.substr(folder, 200) + ".XXXXXX";
}

mode_t ModeOfNewFiles() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

// The mode that goes with the owner and the group the file has got.
mode_t TakeOver(int descriptor, const struct stat& replaced) {
  const mode_t mode = replaced.st_mode & 0777;
  const bool isSameGroup = ::fchown(descriptor, replaced.st_uid, replaced.st_gid) == 0 ||
                           ::fchown(descriptor, -1U, replaced.st_gid) == 0;
  return isSameGroup ? mode : mode & ~mode_t{S_IRWXG};
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& target)
    : fTarget(target), fPath(PatternBeside(target)) {
  const Uninterrupted guard;
  fDescriptor = ::mkostemp(fPath.data(), O_CLOEXEC);
  if (fDescriptor < 0) Fail();
  RemoveOnSignal(fPath);
}

TemporaryFile::TemporaryFile(const std::string& target, const struct stat* replaced)
    : TemporaryFile(target) {
  const mode_t mode = replaced ? TakeOver(fDescriptor, *replaced) : ModeOfNewFiles();
  if (::fchmod(fDescriptor, mode) != 0) Fail();
}

TemporaryFile::~TemporaryFile() {
  if (!fPath.empty()) ::unlink(fPath.c_str());
  gPath[0] = '\0';
}

void TemporaryFile::Replace() {
  if (std::rename(fPath.c_str(), fTarget.c_str()) != 0) Fail();
  fPath.clear();
}

void TemporaryFile::Fail() const {
  throw Failure(Printable(fTarget) + ": " + std::strerror(errno));
}

}  // namespace PosUtil
