// SPDX-License-Identifier: MIT
#pragma once

#include "streams/OpenFile.h"
#include "streams/PositionedStream.h"

namespace KAPHost {

// A stream over a file. Small transfers go through a buffer, large ones do not. Reads and writes
// may alternate.
//
// Independent streams share the open file. While a writable file is shared, nothing is buffered, so
// that each stream sees at once what another has written. Different threads may use different
// streams.
//
// Bytes that the system does not take stay in the buffer. The call that tries to write them returns
// the error; when the last attempt, on release, fails too, its error is reported.
class FileStream final : public PositionedStream {
 public:
  explicit FileStream(std::shared_ptr<OpenFile> file) noexcept;
  ~FileStream() override;

  KAPError* Read(std::size_t& outCount, unsigned char* buffer, std::size_t count) noexcept override;
  KAPError* Write(const unsigned char* bytes, std::size_t count) noexcept override;
  KAPError* Seek(long offset, int origin) noexcept override;
  KAPError* CreateIndependent(std::unique_ptr<Stream>& out, StreamCapability) noexcept override;

 private:
  static constexpr std::size_t kBufferSize = 16384;

  KAPError* GetSize(long& outSize) noexcept override;

  bool IsBuffered() const noexcept;
  // The bytes in the buffer from the position on.
  std::size_t Held() const noexcept;
  KAPError* ReadSome(std::size_t& outCount, unsigned char* buffer, std::size_t count) noexcept;
  KAPError* Fill() noexcept;
  // Whether the buffer can take that many more bytes at that position.
  bool CanAdd(long position, std::size_t count) const noexcept;
  KAPError* WriteDirectly(long position, const unsigned char* bytes, std::size_t count) noexcept;
  KAPError* Flush() noexcept;

  const std::shared_ptr<OpenFile> fFile;
  long fStart = 0;          // the position of the buffer in the file
  std::size_t fFilled = 0;  // the bytes in the buffer
  bool fIsWaiting = false;  // the bytes are not written yet; else they were read
  unsigned char fBuffer[kBufferSize];
};

}  // namespace KAPHost
