// SPDX-License-Identifier: MIT
#include "dir/KAPUtilsDirClient.h"

#include "kap/KAPError.h"

namespace KAP_T_MT {

template <TKAPName Method, class... Args>
CKAPUtilsDir CKAPUtilsDir::Make(Args... args) {
  if (!GetGlobalKAPUtilsDirInterfaceProcs()) return CKAPUtilsDir();
  KAPUtilsDir* handle = nullptr;
  KAPCheck(Client::CallLoaded<Method>(&handle, args...));
  return CKAPUtilsDir(handle, KAPAdopt());
}

CKAPUtilsDir CKAPUtilsDir::GetTempDir() { return Make<"GetTempDir">(); }

CKAPUtilsDir CKAPUtilsDir::GetCurrent() { return Make<"GetCurrent">(); }

CKAPUtilsDir CKAPUtilsDir::New(const CKAPStringAtom& path) {
  return Make<"NewKAPUtilsDir">(path.Handle());
}

bool CKAPUtilsDir::FileExists(const CKAPStringAtom& name) const {
  unsigned char exists = 0;
  KAPCheck(Client::Call<"FileExists">(&exists, Handle(), name.Handle()));
  return exists != 0;
}

void CKAPUtilsDir::Delete(const CKAPStringAtom& name) const {
  KAPCheck(Client::Call<"Delete">(Handle(), name.Handle()));
}

void CKAPUtilsDir::Rename(const CKAPStringAtom& from, const CKAPStringAtom& to) const {
  KAPCheck(Client::Call<"Rename">(Handle(), from.Handle(), to.Handle()));
}

CKAPStringAtom CKAPUtilsDir::GetFilePathSpec(const CKAPStringAtom& name) const {
  KAPStringAtom* path = nullptr;
  KAPCheck(Client::Call<"GetFilePathSpec">(&path, Handle(), name.Handle()));
  return CKAPStringAtom(path, KAPAdopt());
}

CKAPStringAtom CKAPUtilsDir::CreateUniqueFilename(const CKAPStringAtom& prefix,
                                                  const CKAPStringAtom& second) const {
  KAPStringAtom* name = nullptr;
  KAPCheck(Client::Call<"CreateUniqueFilename">(&name, Handle(), prefix.Handle(), second.Handle()));
  return CKAPStringAtom(name, KAPAdopt());
}

CKAPPositionableStream CKAPUtilsDir::OpenStream(const CKAPStringAtom& name,
                                                const char* mode) const {
  return CKAPPositionableStream(GetFilePathSpec(name).Text(), mode);
}

CKAPPositionableStream CKAPUtilsDir::NewTempFileStream(const char* prefix, const char* second,
                                                       const char* mode) {
  KAPPositionableStream* stream = nullptr;
  KAPCheck(TKAPInterfaceClient<KAPUtilsTempFileStreamFactory>::Call<"NewTempFileStream">(
      &stream, prefix, second, mode));
  return CKAPPositionableStream(stream, KAPAdopt());
}

}  // namespace KAP_T_MT
