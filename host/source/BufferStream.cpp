#include "BufferStream.h"

#include <cerrno>

#include "Errors.h"

namespace KAPHost {

KAPError* BufferStream::Write(const unsigned char*, std::size_t) noexcept {
  return MakeError("a buffer stream is read-only", EBADF);
}

KAPError* BufferStream::CreateIndependent(std::unique_ptr<Stream>& out, StreamCapability) noexcept {
  out.reset(new (std::nothrow) BufferStream(fBytes));
  return out != nullptr ? nullptr : MemoryError();
}

}  // namespace KAPHost
