// SPDX-License-Identifier: MIT
#include "files/Destination.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace PosUtil {

namespace {

// The place of a file can change between two looks at it only if another process replaces,
// makes or removes it at the same time. After this number of looks the file has no place.
constexpr int kMaxLooks = 4;

// Under any name, such as /dev/stdout: others may have written to it, and may continue.
bool IsStandardOutput(const std::string& fileName) {
  struct stat file {};
  struct stat output {};
  return ::stat(fileName.c_str(), &file) == 0 && ::fstat(STDOUT_FILENO, &output) == 0 &&
         output.st_dev == file.st_dev && output.st_ino == file.st_ino &&
         IsOpenForWriting(STDOUT_FILENO);
}

bool IsRegular(const Descriptor& file) {
  struct stat status {};
  return ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

Destination::Destination(const std::string& fileName) : fName(fileName) {
  if (IsStandardOutput(fName)) {
    WriteThrough(STDOUT_FILENO);
  } else {
    Open();
  }
}

void Destination::Open() {
  Descriptor file;
  for (int i = 0; i < kMaxLooks; ++i) {
    FileLocation place = FileLocation::Of(fName);
    const int placeError = errno;
    if (place.fHeld >= 0) return WriteThrough(place.fHeld);
    // Opening the old file checks that this user may write to it.
    file = Descriptor(::open(fName.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    if (!file && errno != ENOENT) ThrowFileError(fName);
    if (file && !IsRegular(file)) break;
    if (!place.fFolder) {
      errno = placeError;
      if (!file || errno != ENOENT) ThrowFileError(fName);
      break;  // an open file whose folder is gone
    }
    if (file ? !place.Holds(file.Get()) : !place.IsFree()) continue;
    fTemporary.emplace(std::move(place), fName, std::move(file));
    fOut.emplace(fTemporary->NewDescriptor());
    return;
  }
  if (!file) {
    errno = ENOENT;
    ThrowFileError(fName);
  }
  fIsTruncated = IsRegular(file);
  fOut.emplace(file.Detach());
}

// The caller may have written to the descriptor and may continue, so the output starts where the
// caller stopped, and nothing after it is cut off.
void Destination::WriteThrough(int descriptor) {
  Descriptor file(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
  if (!file) ThrowFileError(fName);
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
