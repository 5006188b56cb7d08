// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <utility>

#include "kap/KAPClientBase.h"
#include "kap/KAPStringAtom.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::TKAPClientObject;

// A file that a directory has created under a name of its own. The descriptor stays open for the
// life of the process, deliberately.
struct UniqueFile {
  CKAPStringAtom fName;
  int fDescriptor;
  struct stat fStatus;
};

// What the handle of a directory stands for: its path, exactly as it was given or found. The
// operations are described in dir/KAPUtilsDirInterfaces.h.
class KAPUtilsDirImpl : public KAP_T_MT::CKAPVirtualClientBase {
 public:
  static constexpr const char* kNotInstance = "instance was not an KAPUtilsDir";

  explicit KAPUtilsDirImpl(CKAPStringAtom path) noexcept : fPath(std::move(path)) {}
  static TKAPClientObject<KAPUtilsDirImpl> GetTempDir();
  static TKAPClientObject<KAPUtilsDirImpl> GetCurrent();

  bool FileExists(const CKAPStringAtom& name) const noexcept;
  void Delete(const CKAPStringAtom& name) const;
  void Rename(const CKAPStringAtom& from, const CKAPStringAtom& to) const;
  CKAPStringAtom GetFilePathSpec(const CKAPStringAtom& name) const;
  UniqueFile CreateUniqueFile(const CKAPStringAtom& prefix) const;
  CKAPStringAtom CreateUniqueFilename(const CKAPStringAtom& prefix,
                                      const CKAPStringAtom& second) const;

  // Creates the file; false if it exists. Deliberate: it is looked for in the directory, but
  // created under the bare name, which for a relative name means the working directory. There are
  // two steps, and others may create the file between them. No registered procedure calls it.
  bool createNewFile(const CKAPStringAtom& name) const;

 private:
  const CKAPStringAtom fPath;
};

}  // namespace NKAPUtilsDirImpl
