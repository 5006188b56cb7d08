#pragma once

#include "OpenFile.h"
#include "PositionedStream.h"

namespace KAPHost {

// A stream over a file. The buffer serves small transfers; large ones pass it by. Reading and
// writing may alternate at will.
//
// Independent streams share the open file. While a writable file is shared nothing is buffered, so
// that each sees at once what another has written. Different streams may be used on different
// threads.
//
// Bytes that the system refuses to take stay in the buffer: the error is returned by the call that
// tried to write them, and reported if the last attempt, on release, fails as well.
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
  // Whether the buffer can take that many bytes, there, in addition to those that wait in it.
  bool CanAdd(long position, std::size_t count) const noexcept;
  KAPError* WriteDirectly(long position, const unsigned char* bytes, std::size_t count) noexcept;
  KAPError* Flush() noexcept;

  const std::shared_ptr<OpenFile> fFile;
  long fStart = 0;          // the place of the buffer's bytes in the file
  std::size_t fFilled = 0;  // the bytes in the buffer
  bool fIsWaiting = false;  // all of them wait to be written; else they have been read
  unsigned char fBuffer[kBufferSize];
};

}  // namespace KAPHost
