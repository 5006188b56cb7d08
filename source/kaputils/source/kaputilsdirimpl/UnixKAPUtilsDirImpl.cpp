// SPDX-License-Identifier: MIT

// The directory's operations on a POSIX system.

#include "kaputilsdirimpl/UnixKAPUtilsDirImpl.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "SafeStringAPIs.h"
#include "kap/KAPError.h"
#include "kap/KAPMemory.h"
#include "kap/TOQException.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::CKAPError;
using KAP_T_MT::KAPCheckedSize;
using KAP_T_MT::KAPNewBlock;
using KAP_T_MT::KAPNewClient;

namespace {

[[noreturn]] void ThrowSystemError(const char* message) {
  CKAPError::ThrowError(message, "KAPUtilsDir", errno);
}

// Deliberate: a unique file that cannot be made has the same message.
[[noreturn]] void ThrowCreateError() {
  ThrowSystemError("KAPUtilsDirImpl::createNewFile: Unknown error");
}

// As sprintf_safe.
int FormatFullPath(char* buffer, std::size_t size, const CKAPStringAtom& directory,
                   const CKAPStringAtom& name) noexcept {
  const char* separator = std::string_view(directory.Text()).ends_with('/') ? "" : "/";
  return KAP_T_MT::sprintf_safe(buffer, size, "%s%s%s", directory.Text(), separator, name.Text());
}

CKAPStringAtom makeFullPath(const CKAPStringAtom& directory, const CKAPStringAtom& name) {
  const std::size_t size = KAPCheckedSize(std::strlen(name.Text()), 1,
                                          KAPCheckedSize(std::strlen(directory.Text()), 1, 16));
  const auto path = KAPNewBlock<char>(size);
  if (FormatFullPath(path.get(), size, directory, name) < 0) KAP_T_MT::KAPThrowMathOverflow();
  return CKAPStringAtom(path.get());
}

// The full path for a call of the system. On the stack, so that a file can be deleted when the host
// has no memory left. A longer path is truncated to a length that the system still rejects.
class SystemPath {
 public:
  SystemPath(const CKAPStringAtom& directory, const CKAPStringAtom& name) noexcept {
    FormatFullPath(fText, sizeof fText, directory, name);
  }
  const char* Text() const noexcept { return fText; }

 private:
  char fText[PATH_MAX + 1];  // the system takes PATH_MAX with the terminator
};

// A new, empty file with a name of its own. Gone again unless it is kept.
class NewFile {
 public:
  // The pattern's six X at the end become the unique part.
  explicit NewFile(char* pattern) : fPath(pattern), fDescriptor(::mkostemp(pattern, O_CLOEXEC)) {
    if (fDescriptor < 0) ThrowCreateError();
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (fDescriptor < 0) return;
    ::close(fDescriptor);
    ::unlink(fPath);
  }

  const char* Name() const noexcept { return std::strrchr(fPath, '/') + 1; }
  struct stat Status() const {
    struct stat status;
    if (::fstat(fDescriptor, &status) != 0) ThrowCreateError();
    return status;
  }
  // Returns the descriptor, which stays open for the life of the process. Deliberate.
  int Keep() noexcept { return std::exchange(fDescriptor, -1); }

 private:
  const char* fPath;
  int fDescriptor;
};

}  // namespace

TKAPClientObject<KAPUtilsDirImpl> KAPUtilsDirImpl::GetTempDir() {
  const char* path = std::getenv("TMPDIR");
  return KAPNewClient<KAPUtilsDirImpl>(CKAPStringAtom(path ? path : "/tmp"));
}

TKAPClientObject<KAPUtilsDirImpl> KAPUtilsDirImpl::GetCurrent() {
  char path[1024];
  if (!::getcwd(path, sizeof path)) {
    ThrowSystemError("KAPUtilsDirImpl::GetCurrent: Unknown error");
  }
  return KAPNewClient<KAPUtilsDirImpl>(CKAPStringAtom(path));
}

bool KAPUtilsDirImpl::FileExists(const CKAPStringAtom& name) const noexcept {
  struct stat entry;
  return ::stat(SystemPath(fPath, name).Text(), &entry) == 0;
}

void KAPUtilsDirImpl::Delete(const CKAPStringAtom& name) const {
  if (std::remove(SystemPath(fPath, name).Text()) != 0) {
    ThrowSystemError("KAPUtilsDirImpl::Delete: Unknown error");
  }
}

void KAPUtilsDirImpl::Rename(const CKAPStringAtom& from, const CKAPStringAtom& to) const {
  if (std::rename(SystemPath(fPath, from).Text(), SystemPath(fPath, to).Text()) != 0) {
    ThrowSystemError("KAPUtilsDirImpl::Rename: Unknown error");
  }
}

CKAPStringAtom KAPUtilsDirImpl::GetFilePathSpec(const CKAPStringAtom& name) const {
  return makeFullPath(fPath, name);
}

bool KAPUtilsDirImpl::createNewFile(const CKAPStringAtom& name) const {
  if (FileExists(name)) return false;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.Text(), "we"),
                                                             &std::fclose);
  if (!file) ThrowCreateError();
  return true;
}

UniqueFile KAPUtilsDirImpl::CreateUniqueFile(const CKAPStringAtom& prefix) const {
  // A second slash does no harm: the system treats two as one.
  const CKAPStringAtom pattern = fPath + CKAPStringAtom("/") + prefix + CKAPStringAtom(".XXXXXX");
  const std::size_t size = KAPCheckedSize(std::strlen(pattern.Text()), 1, 1);
  const auto path = KAPNewBlock<char>(size);
  std::memcpy(path.get(), pattern.Text(), size);
  NewFile file(path.get());
  CKAPStringAtom name(file.Name());
  const struct stat status = file.Status();
  return {std::move(name), file.Keep(), status};
}

CKAPStringAtom KAPUtilsDirImpl::CreateUniqueFilename(const CKAPStringAtom& prefix,
                                                     const CKAPStringAtom& /*second*/) const {
  return CreateUniqueFile(prefix).fName;
}

}  // namespace NKAPUtilsDirImpl
