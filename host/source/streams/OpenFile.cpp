// SPDX-License-Identifier: MIT
#include "streams/OpenFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

#include "errors/Errors.h"

namespace KAPHost {

namespace {

// The open files, kept for the accounting only.
constinit std::mutex gFilesMutex;
constinit IntrusiveList<OpenFile> gFiles;

// The flags of open(2); -1 for an unknown mode.
int Flags(const char* mode) noexcept {
  const char kind = *mode;
  if (kind != 'r' && kind != 'w' && kind != 'a') return -1;
  int access = kind == 'r' ? O_RDONLY : O_WRONLY;
  int others = O_CLOEXEC;
  if (kind != 'r') others |= O_CREAT | (kind == 'w' ? O_TRUNC : O_APPEND);
  while (*++mode != '\0') {
    if (*mode == '+') {
      access = O_RDWR;
    } else if (*mode == 'x' && kind != 'r') {
      others |= O_EXCL;
    } else if (*mode != 'b' && *mode != 'e') {
      return -1;
    }
  }
  return access | others;
}

// Repeats a system call that a signal interrupts.
template <class Call>
auto Uninterrupted(Call call) noexcept {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

}  // namespace

OpenFile::~OpenFile() {
  if (fDescriptor == -1) return;
  {
    const std::lock_guard lock(gFilesMutex);
    gFiles.Remove(*this);
  }
  // An interrupted close has closed the descriptor all the same.
  if (close(fDescriptor) != 0 && errno != EINTR) ReportError(MakeError("close", errno));
}

KAPError* OpenFile::Open(const char* mode) noexcept {
  const int flags = Flags(mode);
  if (flags == -1) return MakeError("open", EINVAL);
  const int descriptor = Uninterrupted([&] { return open(fPath.c_str(), flags, 0666); });
  if (descriptor == -1) return MakeError("open", errno);
  fDescriptor = descriptor;
  fFlags = flags;
  fIsSeekable = lseek(descriptor, 0, SEEK_CUR) >= 0;
  const std::lock_guard lock(gFilesMutex);
  gFiles.Append(*this);
  return nullptr;
}

bool OpenFile::IsReadable() const noexcept { return (fFlags & O_ACCMODE) != O_WRONLY; }

bool OpenFile::IsWritable() const noexcept { return (fFlags & O_ACCMODE) != O_RDONLY; }

bool OpenFile::IsAppending() const noexcept { return (fFlags & O_APPEND) != 0; }

KAPError* OpenFile::Read(std::size_t& outCount, long position, unsigned char* buffer,
                         std::size_t count) const noexcept {
  const ssize_t read = Uninterrupted([&] {
    return fIsSeekable ? pread(fDescriptor, buffer, count, position)
                       : ::read(fDescriptor, buffer, count);
  });
  if (read == -1) return MakeError("read", errno);
  outCount = static_cast<std::size_t>(read);
  return nullptr;
}

KAPError* OpenFile::Write(std::size_t& outCount, long position, const unsigned char* bytes,
                          std::size_t count) const noexcept {
  for (outCount = 0; outCount < count;) {
    const ssize_t written = Uninterrupted([&] {
      const long place = position + static_cast<long>(outCount);
      return fIsSeekable ? pwrite(fDescriptor, bytes + outCount, count - outCount, place)
                         : ::write(fDescriptor, bytes + outCount, count - outCount);
    });
    if (written == -1) return MakeError("write", errno);
    if (written == 0) return MakeError("write", EIO);  // a device that takes nothing, for ever
    outCount += static_cast<std::size_t>(written);
  }
  return nullptr;
}

KAPError* OpenFile::GetSize(long& outSize) const noexcept {
  struct stat status = {};
  if (fstat(fDescriptor, &status) != 0) return MakeError("examine", errno);
  outSize = status.st_size;
  return nullptr;
}

KAPError* OpenFile::MakeError(const char* action, int number) const noexcept {
  return SystemError(action, fPath.c_str(), number);
}

std::mutex& OpenFile::Mutex() noexcept { return gFilesMutex; }

void OpenFile::AddAll(HoldingSum& sum) {
  const std::lock_guard lock(gFilesMutex);
  gFiles.ForEach([&](const OpenFile& file) { sum.Add(KAPResource::kFile, file.fPath, {1, 0}); });
}

template <>
void AddNamed<KAPResource::kFile>(HoldingSum& sum) {
  OpenFile::AddAll(sum);
}

}  // namespace KAPHost
