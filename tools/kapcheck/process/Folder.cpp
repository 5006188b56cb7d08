// SPDX-License-Identifier: MIT
#include "process/Folder.h"

#include <cstdlib>
#include <filesystem>

#include "base/Failure.h"
#include "base/Printable.h"

namespace KAPCheck {

namespace {

std::filesystem::path Parent() {
  std::error_code error;
  std::filesystem::path parent = std::filesystem::temp_directory_path(error);
  if (error) {
    const char* const path = ::getenv("TMPDIR");
    throw PosUtil::Failure("the temporary folder " + PosUtil::Printable(path ? path : "/tmp") +
                           ": " + error.message());
  }
  return std::filesystem::absolute(parent);  // child processes work elsewhere
}

}  // namespace

Folder::Folder() : fPath((Parent() / "kapcheck-XXXXXX").string()) {
  if (!::mkdtemp(fPath.data())) throw PosUtil::Failure("cannot make a temporary folder");
}

// A component may have made folders that their owner may not read.
Folder::~Folder() {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::remove_all(fPath, error);
  if (!error) return;
  fs::permissions(fPath, fs::perms::owner_all, error);
  auto each = fs::recursive_directory_iterator(fPath, error);
  for (; !error && each != fs::end(each); each.increment(error)) {
    std::error_code ignored;
    if (each->is_directory(ignored) && !each->is_symlink(ignored)) {
      fs::permissions(each->path(), fs::perms::owner_all, ignored);
    }
  }
  fs::remove_all(fPath, error);
}

}  // namespace KAPCheck
