#include "files/TemporaryFile.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "base/HexText.h"
#include "files/AccessRights.h"

namespace PosUtil {

namespace {

// A hidden name next to the target, short enough however long the name of the target is.
std::string NameBeside(const std::string& target) {
  std::uint32_t random = 0;
  static_cast<void>(::getrandom(&random, sizeof random, GRND_NONBLOCK));
  return "." + target.substr(0, 200) + "." + std::string(HexText(random).View());
}

std::string PathOf(const Descriptor& file) { return "/proc/self/fd/" + std::to_string(file.Get()); }

}  // namespace

TemporaryFile::TemporaryFile(FileLocation place, std::string fileName, const Descriptor& replaced)
    : fPlace(std::move(place)), fFileName(std::move(fileName)), fIsReplacement(replaced) {
  // The system applies the mask of the process, or the defaults of the folder, to a new file.
  const int mode = fIsReplacement ? 0600 : 0666;
  if (!OpenUnnamed(mode)) OpenNamed(mode);
  if (fIsReplacement && !CopyAccessRights(replaced.Get(), fFile.Get())) {
    const int error = errno;
    RemoveName();
    errno = error;
    Fail();
  }
}

TemporaryFile::~TemporaryFile() { RemoveName(); }

bool TemporaryFile::OpenUnnamed(int mode) {
  fFile = Descriptor(::openat(fPlace.fFolder.Get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
  // Without this path the file could never get a name.
  if (fFile && ::access(PathOf(fFile).c_str(), F_OK) == 0) return true;
  fFile = Descriptor();
  return false;
}

void TemporaryFile::OpenNamed(int mode) {
  const BlockedSignals blocked;
  do {
    fTemporaryName = NameBeside(fPlace.fName);
    fFile = Descriptor(::openat(fPlace.fFolder.Get(), fTemporaryName.c_str(),
                                O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode));
  } while (!fFile && errno == EEXIST);
  if (!fFile) Fail();
  fHasName = true;
  fRemoval.emplace(fPlace.fFolder.Get(), fTemporaryName);
}

void TemporaryFile::RemoveName() {
  if (fHasName) ::unlinkat(fPlace.fFolder.Get(), fTemporaryName.c_str(), 0);
  fHasName = false;
  fRemoval.reset();
}

int TemporaryFile::NewDescriptor() const {
  const int descriptor = ::fcntl(fFile.Get(), F_DUPFD_CLOEXEC, 0);
  if (descriptor < 0) Fail();
  return descriptor;
}

void TemporaryFile::Replace() {
  // Else a crash of the system could leave an empty file under the old name.
  if (::fsync(fFile.Get()) != 0) Fail();
  if (!fHasName) return ReplaceByLink();
  const int folder = fPlace.fFolder.Get();
  if (::renameat(folder, fTemporaryName.c_str(), folder, fPlace.fName.c_str()) != 0) Fail();
  fHasName = false;
  RemoveName();
}

bool TemporaryFile::Link(const std::string& name) const {
  return ::linkat(AT_FDCWD, PathOf(fFile).c_str(), fPlace.fFolder.Get(), name.c_str(),
                  AT_SYMLINK_FOLLOW) == 0;
}

// A link cannot replace a file. So the file first gets a hidden name, and then the name of the old
// one. A child in a session of its own does both: a kill of this process, or of its group, cannot
// come between them. The result counts, not the fate of the child.
void TemporaryFile::ReplaceByLink() {
  if (!fIsReplacement) {
    if (Link(fPlace.fName)) return;
    if (errno != EEXIST) Fail();
  }
  const BlockedSignals blocked;
  fTemporaryName = NameBeside(fPlace.fName);
  const pid_t child = ::fork();
  if (child == 0) {
    ::setsid();
    ::_exit(LinkAndRename());
  }
  int error = EINTR;
  if (child < 0) {
    error = LinkAndRename();
  } else if (int status = 0; ::waitpid(child, &status, 0) == child && WIFEXITED(status)) {
    error = WEXITSTATUS(status);
  }
  if (fPlace.Holds(fFile.Get())) return;
  ::unlinkat(fPlace.fFolder.Get(), fTemporaryName.c_str(), 0);
  errno = error;
  Fail();
}

// Returns 0, or errno.
int TemporaryFile::LinkAndRename() const {
  const int folder = fPlace.fFolder.Get();
  if (!Link(fTemporaryName)) return errno;
  if (::renameat(folder, fTemporaryName.c_str(), folder, fPlace.fName.c_str()) == 0) return 0;
  const int error = errno;
  ::unlinkat(folder, fTemporaryName.c_str(), 0);
  return error;
}

}  // namespace PosUtil
