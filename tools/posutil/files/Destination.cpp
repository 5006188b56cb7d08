#include "files/Destination.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/Failure.h"
#include "base/Printable.h"

namespace PosUtil {

namespace {

constexpr int kMostLinks = 40;  // as the system follows them

// Where the links lead, whether there is something or not.
std::string Followed(std::filesystem::path path) {
  std::error_code error;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, error); ++i) {
    path = path.parent_path() / std::filesystem::read_symlink(path, error);
  }
  return path.string();
}

// By any name, such as /dev/stdout. Others may have written to it, and may go on.
bool IsStandardOutput(const struct stat& file) {
  struct stat output {};
  return ::fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == file.st_dev &&
         output.st_ino == file.st_ino;
}

}  // namespace

Destination::Destination(const std::string& fileName) : fName(fileName) {
  const auto fail = [this] { throw Failure(Printable(fName) + ": " + std::strerror(errno)); };
  struct stat status {};
  const bool isThere = ::stat(fName.c_str(), &status) == 0;
  if (!isThere && errno != ENOENT) fail();
  const bool isStandard = isThere && IsStandardOutput(status);
  if (isStandard || (isThere && !S_ISREG(status.st_mode))) {
    const int descriptor = isStandard ? ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                                      : ::open(fName.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) fail();
    fOut.emplace(descriptor);
    return;
  }
  // Whoever may not write to a file shall not replace it either.
  if (isThere && ::faccessat(AT_FDCWD, fName.c_str(), W_OK, AT_EACCESS) != 0) fail();
  fTemporary.emplace(Followed(fName), isThere ? &status : nullptr);
  fOut.emplace(fTemporary->Descriptor());
}

void Destination::Commit() {
  fOut->Finish();
  if (fTemporary) fTemporary->Replace();
}

}  // namespace PosUtil
