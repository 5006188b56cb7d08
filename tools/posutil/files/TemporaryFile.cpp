// SPDX-License-Identifier: MIT
#include "files/TemporaryFile.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <utility>

#include "base/Failure.h"
#include "base/HexText.h"
#include "base/Printable.h"
#include "files/AccessRights.h"

namespace PosUtil {

namespace {

// Names are random, so a second attempt is rare already.
constexpr int kMaxNames = 100;

// Early in the start of the system there are no random bytes. Other processes, and this one a
// moment ago, still get another number.
std::uint32_t UniqueNumber() {
  static std::uint32_t counter = 0;
  std::uint32_t number = 0;
  if (::getrandom(&number, sizeof number, GRND_NONBLOCK) == sizeof number) return number;
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  constexpr std::uint32_t kSpread = 0x9E3779B1;  // neighbouring processes differ in every byte
  return static_cast<std::uint32_t>(::getpid()) * kSpread +
         static_cast<std::uint32_t>(now.tv_nsec) + ++counter;
}

// A hidden name next to the target, short enough however long the name of the target is.
std::string NameBeside(const std::string& target) {
  return "." + target.substr(0, 200) + "." + std::string(HexText(UniqueNumber()).View());
}

std::string PathOf(const Descriptor& file) { return "/proc/self/fd/" + std::to_string(file.Get()); }

// Some kernels forget the mask of the process when they create an unnamed file. The mask does not
// count in a folder with a default list.
bool ApplyMask(const Descriptor& folder, const Descriptor& file) {
  if (::getxattr(PathOf(folder).c_str(), "system.posix_acl_default", nullptr, 0) > 0) return true;
  const mode_t mask = ::umask(0077);
  ::umask(mask);
  struct stat status {};
  if (::fstat(file.Get(), &status) != 0) return false;
  return !(status.st_mode & mask) || ::fchmod(file.Get(), status.st_mode & 0777 & ~mask) == 0;
}

bool Link(const char* file, int folder, const char* name) noexcept {
  return ::linkat(AT_FDCWD, file, folder, name, AT_SYMLINK_FOLLOW) == 0;
}

// Returns 0, or errno. Runs in a child, which must not throw: it would unwind into the caller's
// code a second time.
int LinkAndRename(const char* file, int folder, const char* hidden, const char* name) noexcept {
  if (!Link(file, folder, hidden)) return errno;
  if (::renameat(folder, hidden, folder, name) == 0) return 0;
  const int error = errno;
  ::unlinkat(folder, hidden, 0);
  return error;
}

// Puts the new file at the place of the old one, and that one at the place of an older copy. Both
// have hidden names before. Runs in a child, like LinkAndRename.
struct Renames {
  int fFolder;
  const char* fNew;
  const char* fName;
  const char* fOld;
  const char* fKept;

  // Returns 0, or errno.
  int Run() const noexcept {
    int error = 0;
    if (::renameat(fFolder, fNew, fFolder, fName) != 0) {
      error = errno;
      ::unlinkat(fFolder, fNew, 0);
      ::unlinkat(fFolder, fOld, 0);
    } else if (!KeepOld()) {
      error = errno;
      ::renameat(fFolder, fOld, fFolder, fName);  // back
    }
    return error;
  }
  bool KeepOld() const noexcept { return ::renameat(fFolder, fOld, fFolder, fKept) == 0; }
};

// A hidden name, which nothing has in the end.
struct HiddenName {
  HiddenName(int folder, const std::string& target) : fFolder(folder), fName(NameBeside(target)) {}
  HiddenName(const HiddenName&) = delete;
  HiddenName& operator=(const HiddenName&) = delete;
  ~HiddenName() { ::unlinkat(fFolder, fName.c_str(), 0); }

  const int fFolder;
  const std::string fName;
};

bool IsFolder(int folder, const std::string& name) {
  struct stat status {};
  return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

// Copies the contents, the rights and the times of a file. Returns false with errno on failure.
bool Copy(int from, int to) {
  char bytes[64 * 1024];
  while (const ssize_t count = ::read(from, bytes, sizeof bytes)) {
    if (count < 0 || ::write(to, bytes, static_cast<std::size_t>(count)) != count) return false;
  }
  struct stat status {};
  if (!CopyAccessRights(from, to) || ::fstat(from, &status) != 0) return false;
  const timespec times[] = {status.st_atim, status.st_mtim};
  return ::futimens(to, times) == 0 && ::fsync(to) == 0;
}

constexpr int kDied = -1;
constexpr int kNoSecondName = 255;  // not an errno: the old file cannot be linked

// Returns what `work` returns, or kDied. The work is in a child in a session of its own: a kill of
// this process, or of its group, cannot come between two steps of it.
template <class Work>
int RunInChild(const Work& work) {
  const pid_t child = ::fork();
  if (child < 0) return work();
  if (child == 0) {
    ::setsid();
    ::_exit(work());
  }
  int status = 0;
  const bool hasExited = ::waitpid(child, &status, 0) == child && WIFEXITED(status);
  return hasExited ? WEXITSTATUS(status) : kDied;
}

// Renames a file, but replaces none.
bool RenameToFree(const std::string& from, const FileLocation& to) {
  const int folder = to.fFolder.Get();
  const char* const name = to.fName.c_str();
  if (::renameat2(folder, from.c_str(), folder, name, RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // The file system cannot check and rename at once.
  if (to.IsFree()) return ::renameat(folder, from.c_str(), folder, name) == 0;
  errno = EEXIST;
  return false;
}

}  // namespace

TemporaryFile::TemporaryFile(FileLocation place, std::string fileName, Descriptor replaced)
    : fPlace(std::move(place)), fFileName(std::move(fileName)), fReplaced(std::move(replaced)) {
  // The system applies the mask of the process, or the defaults of the folder, to a new file.
  const int mode = fReplaced ? 0600 : 0666;
  if (!OpenUnnamed(mode)) OpenNamed(mode);
}

TemporaryFile::~TemporaryFile() { RemoveName(); }

bool TemporaryFile::OpenUnnamed(int mode) {
  fFile = Descriptor(::openat(fPlace.fFolder.Get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
  // Without this path the file could never get a name.
  if (fFile && ::access(PathOf(fFile).c_str(), F_OK) == 0) {
    if (!fReplaced && !ApplyMask(fPlace.fFolder, fFile)) Fail();
    return true;
  }
  fFile = Descriptor();
  return false;
}

void TemporaryFile::OpenNamed(int mode) {
  const BlockedSignals blocked;
  for (int i = 0; i < kMaxNames && !fFile; ++i) {
    fTemporaryName = NameBeside(fPlace.fName);
    fFile = Descriptor(::openat(fPlace.fFolder.Get(), fTemporaryName.c_str(),
                                O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode));
    if (!fFile && errno != EEXIST) break;
  }
  if (!fFile) Fail();
  fHasName = true;
  fRemoval.emplace(fPlace.fFolder.Get(), fTemporaryName);
}

void TemporaryFile::RemoveName() {
  // Another process may have used the same name.
  if (fHasName && fPlace.Holds(fTemporaryName, fFile.Get())) {
    ::unlinkat(fPlace.fFolder.Get(), fTemporaryName.c_str(), 0);
  }
  fHasName = false;
  fRemoval.reset();
}

int TemporaryFile::NewDescriptor() const {
  const int descriptor = ::fcntl(fFile.Get(), F_DUPFD_CLOEXEC, 0);
  if (descriptor < 0) Fail();
  return descriptor;
}

void TemporaryFile::Replace() {
  // Not before: the rights of the old file may have changed while the new one was written.
  if (fReplaced && !CopyAccessRights(fReplaced.Get(), fFile.Get())) Fail();
  // Else a crash of the system could leave an empty file under the old name.
  if (::fsync(fFile.Get()) != 0) Fail();
  CheckReplaced();
  const bool keepsOld = fReplaced && !fKeptSuffix.empty();
  if (keepsOld && !fPlace.Holds(fPlace.fName + fKeptSuffix, fReplaced.Get())) {
    return ReplaceAndKeep();
  }
  if (!fHasName) return fReplaced ? ReplaceByLink() : LinkToFree();
  const int folder = fPlace.fFolder.Get();
  const char* const name = fPlace.fName.c_str();
  if (fReplaced ? ::renameat(folder, fTemporaryName.c_str(), folder, name) != 0
                : !RenameToFree(fTemporaryName, fPlace)) {
    Fail();
  }
  fHasName = false;
  RemoveName();
}

void TemporaryFile::CheckReplaced() const {
  if (fMustHold && fReplaced && !fPlace.Holds(fReplaced.Get())) {
    throw Failure(Printable(fFileName) + ": another process has replaced or removed the file");
  }
}

// The old file first gets a hidden name, as a second link (the rights, the times and the owner
// stay) or, where that cannot be, as a copy. It gets the name of an older copy only when the new file is
// at its place: a failure before that leaves that copy. The place is looked at only if the child
// died, as in ReplaceByLink.
void TemporaryFile::ReplaceAndKeep() {
  const BlockedSignals blocked;
  const int folder = fPlace.fFolder.Get();
  const std::string kept = fPlace.fName + fKeptSuffix;
  const HiddenName old(folder, kept);
  if (IsFolder(folder, kept)) {
    errno = EISDIR;
    ThrowFileError(fFileName + fKeptSuffix);
  }
  const bool isNamed = std::exchange(fHasName, true);  // perhaps, if the child dies
  if (!isNamed) fTemporaryName = NameBeside(fPlace.fName);
  const std::string oldFile = PathOf(fReplaced);
  const std::string file = PathOf(fFile);
  const Renames renames = {folder, fTemporaryName.c_str(), fPlace.fName.c_str(), old.fName.c_str(),
                           kept.c_str()};
  const auto replace = [&](bool isCopied) {
    return RunInChild([&]() noexcept {
      if (!isCopied && !Link(oldFile.c_str(), folder, renames.fOld)) return kNoSecondName;
      return isNamed || Link(file.c_str(), folder, renames.fNew) ? renames.Run() : errno;
    });
  };
  int error = replace(false);
  if (error == kNoSecondName) {
    CopyReplaced(old.fName);
    CheckReplaced();
    error = replace(true);
  }
  if (error == kDied) {
    error = !fPlace.Holds(fFile.Get()) ? EINTR : renames.KeepOld() || errno == ENOENT ? 0 : errno;
  }
  RemoveName();
  if (error == 0) return;
  errno = error;
  Fail();
}

// Some file systems have no second links, and some systems do not link a file of another user.
void TemporaryFile::CopyReplaced(const std::string& name) const {
  const Descriptor from(::open(PathOf(fReplaced).c_str(), O_RDONLY | O_CLOEXEC));
  const Descriptor to(
      ::openat(fPlace.fFolder.Get(), name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
  if (!from || !to || !Copy(from.Get(), to.Get())) ThrowFileError(fFileName + fKeptSuffix);
}

// A file that somebody has made meanwhile stays: its replacement has not been checked.
void TemporaryFile::LinkToFree() const {
  if (!Link(PathOf(fFile).c_str(), fPlace.fFolder.Get(), fPlace.fName.c_str())) Fail();
}

// A link cannot replace a file. So the file first gets a hidden name, and then the name of the old
// one. The place is looked at only if the child died: after a success, another process may have
// replaced the file again.
void TemporaryFile::ReplaceByLink() {
  const BlockedSignals blocked;
  fTemporaryName = NameBeside(fPlace.fName);
  const std::string file = PathOf(fFile);
  fHasName = true;  // perhaps, if the child dies
  int error = RunInChild([&]() noexcept {
    return LinkAndRename(file.c_str(), fPlace.fFolder.Get(), fTemporaryName.c_str(),
                         fPlace.fName.c_str());
  });
  if (error == kDied) error = fPlace.Holds(fFile.Get()) ? 0 : EINTR;
  RemoveName();
  if (error == 0) return;
  errno = error;
  Fail();
}

}  // namespace PosUtil
