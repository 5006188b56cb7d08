// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <utility>

#include "dir/KAPUtilsDirInterfaces.h"
#include "kap/KAPContainer.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPStream.h"
#include "kap/KAPStringAtom.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Loads the interface's table if it is stale. Whether it is loaded and current now.
inline bool GetGlobalKAPUtilsDirInterfaceProcs() noexcept {
  return TKAPInterfaceClient<KAPUtilsDirInterface>::TryRefresh();
}

// A reference to a directory, or to none. The operations are those of KAPUtilsDirInterface, where
// their contracts are.
//
//   const CKAPUtilsDir directory = CKAPUtilsDir::GetTempDir();
//   const CKAPStringAtom name = directory.CreateUniqueFilename("notes");
//   directory.OpenStream(name, "wb").Write(bytes, size);
//   directory.Delete(name);
//
// Ownership: holds one reference, released on destruction; copies share the directory.
// Errors: throws the error that a procedure returns. When the table cannot be loaded, GetTempDir,
//   GetCurrent and New return an empty reference, and the other operations throw
//   (kap/KAPInterfaceClient.h). Operations on an empty reference throw.
// Threads: a plain value; any thread may use the directory itself, which cannot change.
class CKAPUtilsDir : public KAPContainerBaseGeneric {
 public:
  CKAPUtilsDir() noexcept = default;
  // Adds a reference, and adopts one. Neither checks the handle; the first operation does.
  explicit CKAPUtilsDir(KAPUtilsDir* handle) : KAPContainerBaseGeneric(handle) {}
  CKAPUtilsDir(KAPUtilsDir* handle, KAPAdopt adopt) noexcept
      : KAPContainerBaseGeneric(handle, adopt) {}
  explicit CKAPUtilsDir(TKAPNewHandle<KAPUtilsDir> made) noexcept
      : CKAPUtilsDir(std::move(made), KAPAdopt()) {}

  // The directory for temporary files, the working directory, the directory at `path`.
  [[nodiscard]] static CKAPUtilsDir GetTempDir();
  [[nodiscard]] static CKAPUtilsDir GetCurrent();
  [[nodiscard]] static CKAPUtilsDir New(const CKAPStringAtom& path);

  // Test for, delete and rename a file. The contracts are those of the procedures with the same
  // names.
  [[nodiscard]] bool FileExists(const CKAPStringAtom& name) const;
  void Delete(const CKAPStringAtom& name) const;
  void Rename(const CKAPStringAtom& from, const CKAPStringAtom& to) const;
  // The full path of `name`; the file need not exist.
  [[nodiscard]] CKAPStringAtom GetFilePathSpec(const CKAPStringAtom& name) const;
  // Creates an empty file and returns its name. Deliberate: each call keeps a descriptor open for
  // the life of the process; see the procedure.
  [[nodiscard]] CKAPStringAtom CreateUniqueFilename(
      const CKAPStringAtom& prefix, const CKAPStringAtom& second = CKAPStringAtom()) const;

  // A stream over a file of the directory, with a mode of fopen. CKAPError "invalid container" when
  // the host has no stream factory.
  [[nodiscard]] CKAPPositionableStream OpenStream(const CKAPStringAtom& name,
                                                  const char* mode) const;

  // The same for texts, terminated or not, and for a text with an atom. Each is made into an atom,
  // whose constructor throws for a null text and for one that contains a zero byte.
  template <KAPText Text>
  [[nodiscard]] static CKAPUtilsDir New(const Text& path) {
    return New(CKAPStringAtom(path));
  }
  template <KAPText Text>
  [[nodiscard]] bool FileExists(const Text& name) const {
    return FileExists(CKAPStringAtom(name));
  }
  template <KAPText Text>
  void Delete(const Text& name) const {
    Delete(CKAPStringAtom(name));
  }
  template <class From, class To>
  requires(KAPText<From> || KAPText<To>) void Rename(const From& from, const To& to) const {
    Rename(CKAPStringAtom(from), CKAPStringAtom(to));
  }
  template <KAPText Text>
  [[nodiscard]] CKAPStringAtom GetFilePathSpec(const Text& name) const {
    return GetFilePathSpec(CKAPStringAtom(name));
  }
  template <KAPText Text>
  [[nodiscard]] CKAPStringAtom CreateUniqueFilename(const Text& prefix) const {
    return CreateUniqueFilename(CKAPStringAtom(prefix));
  }
  template <class Prefix, class Second>
  requires(KAPText<Prefix> || KAPText<Second>) [[nodiscard]] CKAPStringAtom
      CreateUniqueFilename(const Prefix& prefix, const Second& second) const {
    return CreateUniqueFilename(CKAPStringAtom(prefix), CKAPStringAtom(second));
  }
  template <KAPText Text>
  [[nodiscard]] CKAPPositionableStream OpenStream(const Text& name, const char* mode) const {
    return OpenStream(CKAPStringAtom(name), mode);
  }

  // A stream over a temporary file, which is deleted with the stream; see
  // KAPUtilsTempFileStreamFactory.
  [[nodiscard]] static CKAPPositionableStream NewTempFileStream(const char* prefix,
                                                                const char* second,
                                                                const char* mode);

  // The procedures of the interface and the one of the temporary files' factory, as loaded last: to
  // read, for debugging; the operations above call them.
  static constexpr const auto& fProcs = TKAPInterfaceClient<KAPUtilsDirInterface>::Slots();
  static constexpr const std::atomic<void*>& fNewTempFileProc =
      TKAPInterfaceClient<KAPUtilsTempFileStreamFactory>::Slots()[0];

 private:
  using Client = TKAPInterfaceClient<KAPUtilsDirInterface>;

  template <TKAPName Method, class... Args>
  static CKAPUtilsDir Make(Args... args);
};

}  // namespace KAP_T_MT
