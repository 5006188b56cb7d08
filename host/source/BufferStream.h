#pragma once

#include "MemoryStream.h"

namespace KAPHost {

// A read-only stream over bytes in memory. Nobody changes them, so independent streams may be read
// on different threads.
class BufferStream final : public MemoryStream {
 public:
  explicit BufferStream(std::shared_ptr<ByteStore> bytes) noexcept
      : MemoryStream("buffer", std::move(bytes)) {}

  KAPError* Write(const unsigned char* bytes, std::size_t count) noexcept override;
  KAPError* CreateIndependent(std::unique_ptr<Stream>& out, StreamCapability) noexcept override;
};

}  // namespace KAPHost
