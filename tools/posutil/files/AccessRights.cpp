#include "files/AccessRights.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <vector>

namespace PosUtil {

namespace {

constexpr char kAccessList[] = "system.posix_acl_access";

// The access control list as the kernel's bytes; empty for a file without one. None on failure.
std::optional<std::vector<char>> AccessList(int file) {
  std::vector<char> list;
  for (;;) {
    const ssize_t size = ::fgetxattr(file, kAccessList, nullptr, 0);
    if (size < 0) break;
    list.resize(static_cast<std::size_t>(size));
    if (::fgetxattr(file, kAccessList, list.data(), list.size()) == size) return list;
    if (errno != ERANGE) break;  // the list has grown in between
  }
  if (errno != ENODATA && errno != EOPNOTSUPP) return std::nullopt;
  return std::vector<char>();
}

// A folder may give its new files a list; then chmod alone would set the mask of that list.
bool SetAccessList(int file, const std::vector<char>& list) {
  if (!list.empty()) return ::fsetxattr(file, kAccessList, list.data(), list.size(), 0) == 0;
  return ::fremovexattr(file, kAccessList) == 0 || errno == ENODATA || errno == EOPNOTSUPP;
}

// With another group, members of the old one count as others, and others may count as members. So
// both get only the rights that group and others had in common.
mode_t ModeForAnotherGroup(mode_t mode) {
  const mode_t common = (mode >> 3) & mode & S_IRWXO;
  return (mode & S_IRWXU) | common << 3 | common;
}

}  // namespace

bool CopyAccessRights(int from, int to) {
  struct stat status {};
  if (::fstat(from, &status) != 0) return false;
  const auto list = AccessList(from);
  if (!list) return false;
  const bool isSameGroup =
      ::fchown(to, status.st_uid, status.st_gid) == 0 || ::fchown(to, -1U, status.st_gid) == 0;
  mode_t mode = status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
  if (!isSameGroup) mode = ModeForAnotherGroup(mode);
  // Without its list a file has no place for the rights of single users: no rights for other users.
  if (!list->empty() && (!isSameGroup || !SetAccessList(to, *list))) {
    mode &= S_IRWXU;
    if (!SetAccessList(to, {})) return false;
  }
  if (list->empty() && !SetAccessList(to, {})) return false;
  return ::fchmod(to, mode) == 0;
}

}  // namespace PosUtil
