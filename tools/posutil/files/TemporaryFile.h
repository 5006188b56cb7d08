// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "files/FileLocation.h"
#include "files/RemovalOnSignal.h"

namespace PosUtil {

// A new file that takes the place of another one when it is complete. Until then it has no name,
// so nothing is left of it however the process ends. In file systems without unnamed files it has
// a hidden name; then SIGKILL and a crash of the system leave it, other signals remove it.
// Errors: Failure. Only one may exist at a time.
class TemporaryFile {
 public:
  // `fileName` is the name in messages. `replaced` is the open file at the place, none if there is
  // no file.
  TemporaryFile(FileLocation place, std::string fileName, Descriptor replaced);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  // Another descriptor of the file, open for writing. The caller closes it.
  int NewDescriptor() const;

  // Replace then gives the replaced file a name of its own: that of the place with this suffix. A
  // file of that name is replaced, if all else succeeds. Without a replaced file, no-op.
  void KeepReplacedAs(const std::string& suffix) { fKeptSuffix = suffix; }

  // Replace then fails if another file has taken the place of the replaced one, since the new
  // file is made from its contents. Without a replaced file, no-op.
  void RequireReplaced() { fMustHold = true; }

  // Puts the file at its place, with the owner, group and rights that the replaced file has now;
  // see CopyAccessRights. Without a replaced file, fails if a file exists there by now. A kill at
  // any moment leaves either the old file or the new one.
  void Replace();

 private:
  bool OpenUnnamed(int mode);
  void OpenNamed(int mode);
  void LinkToFree() const;
  void ReplaceByLink();
  void RemoveName();
  void ReplaceAndKeep();
  void CopyReplaced(const std::string& name) const;
  void CheckReplaced() const;
  [[noreturn]] void Fail() const { ThrowFileError(fFileName); }

  const FileLocation fPlace;
  const std::string fFileName;
  const Descriptor fReplaced;
  std::string fKeptSuffix;
  bool fMustHold = false;
  std::string fTemporaryName;
  bool fHasName = false;
  Descriptor fFile;
  std::optional<RemovalOnSignal> fRemoval;
};

}  // namespace PosUtil
