// SPDX-License-Identifier: MIT
#include "kaputilsdirimpl/TempFile.h"

#include <unistd.h>

#include <utility>

#include "SafeStringAPIs.h"
#include "dir/KAPUtilsDirInterfaces.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/TOQException.h"
#include "kapimpl/base/ContainedObject.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "kaputilsdirimpl/UnixKAPUtilsDirImpl.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::CKAPPositionableStream;
using KAP_T_MT::CKAPUtilsDir;
using KAP_T_MT::TOQException;

namespace {

constexpr const char* kForReading = "rb";

}  // namespace

TempFile TempFile::Create(const CKAPStringAtom& prefix) {
  // Throws what fails; GetTempDir returns an empty reference then.
  KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::KAPUtilsDirInterface>::Refresh();
  CKAPUtilsDir directory = CKAPUtilsDir::GetTempDir();
  const auto& instance =
      KAPInstanceOf<KAPUtilsDirImpl>(directory.Handle(), KAPUtilsAtoms::Get().POSValidatorImpl);
  UniqueFile file = instance.CreateUniqueFile(prefix);
  return TempFile(std::move(directory), std::move(file.fName), file.fDescriptor, file.fStatus);
}

TempFile::TempFile(CKAPUtilsDir directory, CKAPStringAtom name, int descriptor,
                   const struct stat& status)
    : fDirectory(std::move(directory)),
      fName(std::move(name)),
      fDescriptor(descriptor),
      fDevice(status.st_dev),
      fNode(status.st_ino),
      fCountsLinks(status.st_nlink != 0) {}

bool TempFile::IsSame(const struct stat& file) const noexcept {
  return file.st_dev == fDevice && file.st_ino == fNode;
}

// Something else in the process may have closed the descriptor, and its number may mean another
// file by now; hence the comparison.
bool TempFile::HasDescriptor(struct stat& file) const noexcept {
  return ::fstat(fDescriptor, &file) == 0 && IsSame(file);
}

bool TempFile::IsAt(const char* path) const noexcept {
  struct stat file = {};
  return ::stat(path, &file) == 0 && IsSame(file);
}

CKAPPositionableStream TempFile::Open(const char* mode) const {
  const CKAPStringAtom name = fDirectory.GetFilePathSpec(fName);
  struct stat file = {};
  if (::lstat(name.Text(), &file) == 0 && !IsSame(file)) {
    throw TOQException("the temporary file was replaced");
  }
  return CKAPPositionableStream(name.Text(), mode);
}

// By the number of the process: the host may open files in another one.
CKAPPositionableStream TempFile::Reopen() const {
  struct stat file = {};
  const bool isGone = !HasDescriptor(file) || (fCountsLinks && file.st_nlink == 0);
  if (isGone) return Open(kForReading);
  char path[64];
  KAP_T_MT::sprintf_safe(path, sizeof path, "/proc/%d/fd/%d", static_cast<int>(::getpid()),
                         fDescriptor);
  return IsAt(path) ? CKAPPositionableStream(path, kForReading) : Open(kForReading);
}

void TempFile::CloseDescriptor() const noexcept {
  struct stat file = {};
  if (HasDescriptor(file)) ::close(fDescriptor);
}

}  // namespace NKAPUtilsDirImpl
