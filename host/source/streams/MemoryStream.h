// SPDX-License-Identifier: MIT
#pragma once

#include "streams/ByteStore.h"
#include "streams/PositionedStream.h"

namespace KAPHost {

// A stream over bytes in memory that grow. Independent streams share the bytes: what one writes,
// the others read. They have no lock and are for one thread.
class MemoryStream : public PositionedStream {
 public:
  explicit MemoryStream(std::shared_ptr<ByteStore> bytes) noexcept
      : MemoryStream("memory", std::move(bytes)) {}

  KAPError* Read(std::size_t& outCount, unsigned char* buffer, std::size_t count) noexcept final;
  KAPError* Write(const unsigned char* bytes, std::size_t count) noexcept override;
  KAPError* CreateIndependent(std::unique_ptr<Stream>& out, StreamCapability) noexcept override;

 protected:
  MemoryStream(const char* kind, std::shared_ptr<ByteStore> bytes) noexcept
      : PositionedStream(kind), fBytes(std::move(bytes)) {}

  KAPError* GetSize(long& outSize) noexcept final;

  const std::shared_ptr<ByteStore> fBytes;
};

// A read-only stream over bytes in memory. The bytes never change, so different threads may read
// independent streams.
class BufferStream final : public MemoryStream {
 public:
  explicit BufferStream(std::shared_ptr<ByteStore> bytes) noexcept
      : MemoryStream("buffer", std::move(bytes)) {}

  KAPError* Write(const unsigned char* bytes, std::size_t count) noexcept override;
  KAPError* CreateIndependent(std::unique_ptr<Stream>& out, StreamCapability) noexcept override;
};

}  // namespace KAPHost
