// SPDX-License-Identifier: MIT
#include "files/AccessRights.h"

#include <linux/limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

namespace PosUtil {

namespace {

constexpr char kAccessList[] = "system.posix_acl_access";
constexpr char kNfsList[] = "system.nfs4_acl";

// Somebody has to change the rights between every two looks to use these up.
constexpr int kMaxLooks = 8;

using Bytes = std::vector<char>;

struct Rights {
  uid_t fOwner;
  gid_t fGroup;
  mode_t fMode;
  Bytes fList;
  Bytes fNfsList;

  bool operator==(const Rights&) const = default;
};

// The attribute as the kernel's bytes; empty for a file without it. None on failure.
std::optional<Bytes> Attribute(int file, const char* name) {
  Bytes value(XATTR_SIZE_MAX);  // asking for the size first would race with a change
  const ssize_t size = ::fgetxattr(file, name, value.data(), value.size());
  if (size < 0 && errno != ENODATA && errno != EOPNOTSUPP) return std::nullopt;
  value.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return value;
}

std::optional<Rights> ReadRights(int file) {
  auto list = Attribute(file, kAccessList);
  if (!list) return std::nullopt;
  auto nfsList = Attribute(file, kNfsList);
  struct stat status {};
  if (!nfsList || ::fstat(file, &status) != 0) return std::nullopt;
  const mode_t mode = status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
  return Rights{status.st_uid, status.st_gid, mode, std::move(*list), std::move(*nfsList)};
}

// A mode and a list from two sides of a change could add up to more than either grants.
std::optional<Rights> SettledRights(int file) {
  auto rights = ReadRights(file);
  for (int i = 0; i < kMaxLooks && rights; ++i) {
    auto again = ReadRights(file);
    if (again == rights) return rights;
    rights = std::move(again);
  }
  if (rights) errno = EBUSY;
  return std::nullopt;
}

// A folder may give its new files a list; then chmod alone would set the mask of that list.
bool SetAccessList(int file, const Bytes& list) {
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
  const auto rights = SettledRights(from);
  if (!rights) return false;
  const auto& [owner, group, oldMode, list, nfsList] = *rights;
  const bool isSameGroup = ::fchown(to, owner, group) == 0 || ::fchown(to, -1U, group) == 0;
  mode_t mode = isSameGroup ? oldMode : ModeForAnotherGroup(oldMode);
  // The mode is only a summary of an NFSv4 list, and may show rights that the list denies.
  if (!nfsList.empty()) mode &= S_IRWXU;
  // Without its list a file has no place for the rights of single users: none for other users.
  if (!list.empty() && (!isSameGroup || !SetAccessList(to, list))) {
    mode &= S_IRWXU;
    if (!SetAccessList(to, {})) return false;
  }
  if (list.empty() && !SetAccessList(to, {})) return false;
  return ::fchmod(to, mode) == 0;
}

}  // namespace PosUtil
