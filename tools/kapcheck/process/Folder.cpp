// SPDX-License-Identifier: MIT
#include "process/Folder.h"

#include <stdlib.h>

#include <filesystem>

#include "base/Failure.h"

namespace KAPCheck {

Folder::Folder() : fPath((std::filesystem::temp_directory_path() / "kapcheck-XXXXXX").string()) {
  if (!::mkdtemp(fPath.data())) throw PosUtil::Failure("cannot make a temporary folder");
}

Folder::~Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(fPath, ignored);
}

}  // namespace KAPCheck
