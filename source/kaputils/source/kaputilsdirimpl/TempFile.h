// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include "dir/KAPUtilsDirClient.h"
#include "kap/KAPStream.h"
#include "kap/KAPStringAtom.h"

namespace NKAPUtilsDirImpl {

// The file of a temporary-file stream and of its views; a plain value.
//
// Opening it again by its name would be a risk: in a directory for temporary files that has no
// sticky bit, any user may replace it with another file or a link. So it is opened through the
// descriptor that its creation left open for the life of the process. Only where that fails is it
// opened by its name, after a check that the name leads to the file at this moment.
class TempFile {
 public:
  // A new, empty file in the directory for temporary files, named as by "CreateUniqueFilename".
  static TempFile Create(const KAP_T_MT::CKAPStringAtom& prefix);

  // A file stream of the host; `mode` as for fopen. TOQException when the file is deleted, or when
  // only its name is left and leads to something else.
  KAP_T_MT::CKAPPositionableStream Open(const char* mode) const;

  // Deletes what has the file's name now; of a link the link itself. The directory's error.
  void Delete() const { fDirectory.Delete(fName); }

 private:
  TempFile(KAP_T_MT::CKAPUtilsDir directory, KAP_T_MT::CKAPStringAtom name, int descriptor,
           const struct stat& status);

  bool IsSame(const struct stat& file) const noexcept;
  bool HasDescriptor() const;
  KAP_T_MT::CKAPPositionableStream OpenByName(const char* mode) const;

  KAP_T_MT::CKAPUtilsDir fDirectory;
  KAP_T_MT::CKAPStringAtom fName;
  int fDescriptor;  // borrowed from the process
  dev_t fDevice;
  ino_t fNode;
  bool fCountsLinks;  // some file systems report no links for every file
};

}  // namespace NKAPUtilsDirImpl
