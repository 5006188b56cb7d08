#include "kaputilsdirimpl/TempFile.h"

#include <utility>

#include "SafeStringAPIs.h"
#include "kap/TOQException.h"
#include "kapimpl/base/ContainedObject.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "kaputilsdirimpl/UnixKAPUtilsDirImpl.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::CKAPPositionableStream;
using KAP_T_MT::CKAPUtilsDir;
using KAP_T_MT::TOQException;

TempFile TempFile::Create(const CKAPStringAtom& prefix) {
  CKAPUtilsDir directory = CKAPUtilsDir::GetTempDir();
  const auto& instance =
      KAPInstanceOf<KAPUtilsDirImpl>(directory.Handle(), KAPUtilsAtoms::Get().POSValidatorImpl);
  UniqueFile file = instance.CreateUniqueFile(prefix);
  return TempFile(std::move(directory), std::move(file.fName), file.fDescriptor);
}

TempFile::TempFile(CKAPUtilsDir directory, CKAPStringAtom name, int descriptor)
    : fDirectory(std::move(directory)), fName(std::move(name)), fDescriptor(descriptor) {
  struct stat file = {};
  ::fstat(fDescriptor, &file);
  fDevice = file.st_dev;
  fNode = file.st_ino;
}

bool TempFile::IsSame(const struct stat& file) const noexcept {
  return file.st_dev == fDevice && file.st_ino == fNode;
}

// Something else in the process may have closed the descriptor, and its number may mean another
// file by now; hence the comparison. Where /proc is not mounted the name has to do, if it leads to
// the file at this moment.
CKAPPositionableStream TempFile::Open(const char* mode) const {
  struct stat file = {};
  if (::fstat(fDescriptor, &file) != 0 || !IsSame(file) || file.st_nlink == 0) {
    throw TOQException("the temporary file was deleted");
  }
  char path[32];
  KAP_T_MT::sprintf_safe(path, sizeof path, "/proc/self/fd/%d", fDescriptor);
  if (::stat(path, &file) == 0 && IsSame(file)) return CKAPPositionableStream(path, mode);
  const CKAPStringAtom name = fDirectory.GetFilePathSpec(fName);
  if (::lstat(name.Text(), &file) != 0 || !IsSame(file)) {
    throw TOQException("the temporary file was replaced");
  }
  return CKAPPositionableStream(name.Text(), mode);
}

}  // namespace NKAPUtilsDirImpl
