#include "files/Destination.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace PosUtil {

namespace {

// The place of an open file can change between two looks at it only if another process replaces the
// file at the same time. After this number of looks the file counts as one without a place.
constexpr int kMaxLooks = 4;

// Under any name, such as /dev/stdout: others may have written to it, and may continue.
bool IsStandardOutput(const std::string& fileName) {
  struct stat file {};
  struct stat output {};
  return ::stat(fileName.c_str(), &file) == 0 && ::fstat(STDOUT_FILENO, &output) == 0 &&
         output.st_dev == file.st_dev && output.st_ino == file.st_ino;
}

bool IsRegular(const Descriptor& file) {
  struct stat status {};
  return ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

Destination::Destination(const std::string& fileName) : fName(fileName) {
  Descriptor file;
  if (IsStandardOutput(fName)) {
    file = Descriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
    if (!file) ThrowFileError(fName);
    fOut.emplace(file.Detach());
    return;
  }
  for (int i = 0; i < kMaxLooks; ++i) {
    // Opening the old file checks that this user may write to it.
    file = Descriptor(::open(fName.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    if (!file && errno != ENOENT) ThrowFileError(fName);
    if (file && !IsRegular(file)) break;
    FileLocation place = FileLocation::Of(fName);
    if (!place.fFolder) ThrowFileError(fName);
    if (file && !place.Holds(file.Get())) continue;
    fTemporary.emplace(std::move(place), fName, file);
    fOut.emplace(fTemporary->NewDescriptor());
    return;
  }
  fIsTruncated = IsRegular(file);
  fOut.emplace(file.Detach());
}

void Destination::Commit() {
  if (fTemporary) {
    fOut->Finish();
    fTemporary->Replace();
    return;
  }
  fOut->Flush();
  if (fIsTruncated && ::ftruncate(fOut->Descriptor(), static_cast<off_t>(fOut->Position())) != 0) {
    ThrowFileError(fName);
  }
  fOut->Finish();
}

}  // namespace PosUtil
