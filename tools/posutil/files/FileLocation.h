// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "files/Descriptor.h"

namespace PosUtil {

// A name in an open folder. Unlike a path, it stays in that folder when another process changes a
// symbolic link or renames a folder of the path.
struct FileLocation {
  Descriptor fFolder;
  std::string fName;
  // The descriptor of this process that the path stands for, as /dev/fd/N does; -1 for none. Only
  // one that is open for writing counts.
  int fHeld = -1;

  // The place that the path leads to, through symbolic links; a file need not exist there. On
  // failure fFolder is empty, and errno has the reason.
  static FileLocation Of(const std::string& path);

  // Returns whether the file at this place, not followed as a link, is the open file.
  bool Holds(int descriptor) const { return Holds(fName, descriptor); }
  // The same for another name in the folder.
  bool Holds(const std::string& name, int descriptor) const;
  // Returns whether nothing has the name, not even a symbolic link that leads nowhere.
  bool IsFree() const;
};

}  // namespace PosUtil
