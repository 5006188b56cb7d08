// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include "dir/KAPUtilsDirClient.h"
#include "kap/KAPStream.h"
#include "kap/KAPStringAtom.h"

namespace NKAPUtilsDirImpl {

// The file of a temporary-file stream and of its views; a plain value.
//
// In a directory for temporary files that has no sticky bit, any user may replace it with another
// file or a link. So the file is opened by its name right after its creation only, for the stream,
// and after a check that the name leads to nothing else. Later, for a view, it is opened through
// the descriptor that its creation left open for the life of the process; where the system does not
// provide that, by its name, after the same check.
class TempFile {
 public:
  // A new, empty file in the directory for temporary files, named as by "CreateUniqueFilename".
  static TempFile Create(const KAP_T_MT::CKAPStringAtom& prefix);

  // A file stream of the host; `mode` as for fopen. The host's error; TOQException when the name
  // leads to something else.
  KAP_T_MT::CKAPPositionableStream Open(const char* mode) const;
  // One that reads the file as it is now. As Open; the host's error also when the file is deleted.
  KAP_T_MT::CKAPPositionableStream Reopen() const;

  // Deletes what has the file's name now; of a link the link itself. The directory's error.
  void Delete() const { fDirectory.Delete(fName); }
  // Closes the descriptor: for a file that nothing will use.
  void CloseDescriptor() const noexcept;

 private:
  TempFile(KAP_T_MT::CKAPUtilsDir directory, KAP_T_MT::CKAPStringAtom name, int descriptor,
           const struct stat& status);

  bool IsSame(const struct stat& file) const noexcept;
  // Whether a descriptor or a path leads to the file.
  bool HasDescriptor(struct stat& file) const noexcept;
  bool IsAt(const char* path) const noexcept;

  KAP_T_MT::CKAPUtilsDir fDirectory;
  KAP_T_MT::CKAPStringAtom fName;
  int fDescriptor;  // borrowed from the process
  dev_t fDevice;
  ino_t fNode;
  bool fCountsLinks;  // some file systems report no links for every file
};

}  // namespace NKAPUtilsDirImpl
