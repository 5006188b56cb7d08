// SPDX-License-Identifier: MIT
#include "files/FileLocation.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>

namespace PosUtil {

namespace {

constexpr int kMaxLinks = 40;  // the limit of the kernel

// The folder of the path, which starts in `base` if it is relative.
Descriptor OpenFolder(const Descriptor& base, const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);  // empty without a slash
  return Descriptor(::openat(base ? base.Get() : AT_FDCWD, folder.empty() ? "." : folder.c_str(),
                             O_PATH | O_DIRECTORY | O_CLOEXEC));
}

bool IsSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// See FileLocation::fHeld. The folder of the place is not open for writing, so it never counts.
int HeldDescriptor(const FileLocation& place) {
  struct stat folder {};
  struct stat descriptors {};
  if (::fstat(place.fFolder.Get(), &folder) != 0 || ::stat("/proc/self/fd", &descriptors) != 0 ||
      !IsSameFile(folder, descriptors)) {
    return -1;
  }
  const char* const end = place.fName.data() + place.fName.size();
  int number = -1;
  const auto result = std::from_chars(place.fName.data(), end, number);
  const bool isNumber = result.ec == std::errc() && result.ptr == end;
  return isNumber && IsOpenForWriting(number) ? number : -1;
}

}  // namespace

FileLocation FileLocation::Of(const std::string& path) {
  FileLocation place;
  std::string rest = path;
  for (int i = 0; i <= kMaxLinks; ++i) {
    place.fFolder = OpenFolder(place.fFolder, rest);
    if (!place.fFolder) return place;
    place.fName = rest.substr(rest.rfind('/') + 1);
    place.fHeld = HeldDescriptor(place);
    if (place.fHeld >= 0) return place;
    char target[PATH_MAX];
    const ssize_t size =
        ::readlinkat(place.fFolder.Get(), place.fName.c_str(), target, sizeof target);
    if (size < 0) return place;  // not a link, or nothing
    rest.assign(target, static_cast<std::size_t>(size));
  }
  errno = ELOOP;
  return {};
}

bool FileLocation::Holds(const std::string& name, int descriptor) const {
  struct stat here {};
  struct stat file {};
  return ::fstatat(fFolder.Get(), name.c_str(), &here, AT_SYMLINK_NOFOLLOW) == 0 &&
         ::fstat(descriptor, &file) == 0 && IsSameFile(here, file);
}

bool FileLocation::IsFree() const {
  struct stat here {};
  return ::fstatat(fFolder.Get(), fName.c_str(), &here, AT_SYMLINK_NOFOLLOW) != 0 &&
         errno == ENOENT;
}

}  // namespace PosUtil
