// SPDX-License-Identifier: MIT
#include "streams/MemoryStream.h"

#include <cerrno>
#include <limits>

#include "errors/Errors.h"

namespace KAPHost {

KAPError* MemoryStream::Read(std::size_t& outCount, unsigned char* buffer,
                             std::size_t count) noexcept {
  outCount = fBytes->Read(static_cast<std::size_t>(fPosition), buffer, count);
  fPosition += static_cast<long>(outCount);
  return nullptr;
}

KAPError* MemoryStream::Write(const unsigned char* bytes, std::size_t count) noexcept {
  const auto room = static_cast<std::size_t>(std::numeric_limits<long>::max() - fPosition);
  if (count > room || !fBytes->Write(static_cast<std::size_t>(fPosition), bytes, count)) {
    return MemoryError();
  }
  fPosition += static_cast<long>(count);
  return nullptr;
}

KAPError* MemoryStream::CreateIndependent(std::unique_ptr<Stream>& out, StreamCapability) noexcept {
  out.reset(new (std::nothrow) MemoryStream(fBytes));
  return out ? nullptr : MemoryError();
}

KAPError* MemoryStream::GetSize(long& outSize) noexcept {
  outSize = static_cast<long>(fBytes->Size());
  return nullptr;
}

KAPError* BufferStream::Write(const unsigned char*, std::size_t) noexcept {
  return MakeError("a buffer stream is read-only", EBADF);
}

KAPError* BufferStream::CreateIndependent(std::unique_ptr<Stream>& out, StreamCapability) noexcept {
  out.reset(new (std::nothrow) BufferStream(fBytes));
  return out ? nullptr : MemoryError();
}

}  // namespace KAPHost
