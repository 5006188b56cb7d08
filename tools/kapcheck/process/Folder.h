// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace KAPCheck {

// A temporary folder, removed with all that is in it.
class Folder {
 public:
  // Throws PosUtil::Failure when it cannot be made.
  Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder();

  const std::string& Path() const { return fPath; }

 private:
  std::string fPath;
};

}  // namespace KAPCheck
