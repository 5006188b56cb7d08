#pragma once

#include "dir/KAPUtilsDirInterfaces.h"
#include "kap/KAPContainer.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPStream.h"
#include "kap/KAPStringAtom.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Whether the interface's table is there and current.
inline bool GetGlobalKAPUtilsDirInterfaceProcs() noexcept {
  return TKAPInterfaceClient<KAPUtilsDirInterface>::TryRefresh();
}

// A reference to a directory, or an empty one; the operations are those of KAPUtilsDirInterface.
//
//   const CKAPUtilsDir directory = CKAPUtilsDir::GetTempDir();
//   const CKAPStringAtom name = directory.CreateUniqueFilename(CKAPStringAtom("notes"));
//   directory.OpenStream(name, "wb").Write(bytes, size);
//   directory.Delete(name);
//
// Ownership: holds one reference, released on destruction; copies share the same directory.
// Errors: what a procedure returns is raised as CKAPError. Where the interface cannot be had,
//   GetTempDir, GetCurrent and New give an empty reference; the other operations raise, as they do
//   for an empty reference.
// Threads: as a plain value; the directory behind it may be used by any thread.
class CKAPUtilsDir : public KAPContainerBaseGeneric {
 public:
  CKAPUtilsDir() noexcept = default;
  explicit CKAPUtilsDir(KAPUtilsDir* handle)
      : KAPContainerBaseGeneric(handle) {}  // adds a reference
  CKAPUtilsDir(KAPUtilsDir* handle, KAPAdopt adopt) noexcept
      : KAPContainerBaseGeneric(handle, adopt) {}

  static CKAPUtilsDir GetTempDir();
  static CKAPUtilsDir GetCurrent();
  static CKAPUtilsDir New(const CKAPStringAtom& path);

  bool FileExists(const CKAPStringAtom& name) const;
  void Delete(const CKAPStringAtom& name) const;
  void Rename(const CKAPStringAtom& from, const CKAPStringAtom& to) const;
  CKAPStringAtom GetFilePathSpec(const CKAPStringAtom& name) const;
  CKAPStringAtom CreateUniqueFilename(const CKAPStringAtom& prefix,
                                      const CKAPStringAtom& second = CKAPStringAtom()) const;

  // A stream of the host on a file of the directory; `mode` as for fopen.
  CKAPPositionableStream OpenStream(const CKAPStringAtom& name, const char* mode) const;

  // A stream on a temporary file that is deleted with it, see KAPUtilsTempFileStreamFactory.
  static CKAPPositionableStream NewTempFileStream(const char* prefix, const char* second,
                                                  const char* mode);

 private:
  using Client = TKAPInterfaceClient<KAPUtilsDirInterface>;

  template <TKAPName Method, class... Args>
  static CKAPUtilsDir Make(Args... args);
};

}  // namespace KAP_T_MT
