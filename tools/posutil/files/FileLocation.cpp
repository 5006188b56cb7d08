#include "files/FileLocation.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace PosUtil {

namespace {

constexpr int kMaxLinks = 40;  // the limit of the kernel

// The folder of the path, which starts in `base` if it is relative.
Descriptor OpenFolder(const Descriptor& base, const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);  // empty without a slash
  return Descriptor(::openat(base ? base.Get() : AT_FDCWD, folder.empty() ? "." : folder.c_str(),
                             O_PATH | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace

FileLocation FileLocation::Of(const std::string& path) {
  FileLocation place;
  std::string rest = path;
  for (int i = 0; i <= kMaxLinks; ++i) {
    place.fFolder = OpenFolder(place.fFolder, rest);
    if (!place.fFolder) return place;
    place.fName = rest.substr(rest.rfind('/') + 1);
    char target[PATH_MAX];
    const ssize_t size =
        ::readlinkat(place.fFolder.Get(), place.fName.c_str(), target, sizeof target);
    if (size < 0) return place;  // not a link, or nothing
    rest.assign(target, static_cast<std::size_t>(size));
  }
  errno = ELOOP;
  return {};
}

bool FileLocation::Holds(int descriptor) const {
  struct stat here {};
  struct stat file {};
  return ::fstatat(fFolder.Get(), fName.c_str(), &here, AT_SYMLINK_NOFOLLOW) == 0 &&
         ::fstat(descriptor, &file) == 0 && here.st_dev == file.st_dev &&
         here.st_ino == file.st_ino;
}

}  // namespace PosUtil
