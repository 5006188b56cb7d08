// SPDX-License-Identifier: MIT
#include "streams/FileStream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "errors/Errors.h"

namespace KAPHost {

namespace {

// The bytes from a position to the largest one.
std::size_t RoomAfter(long position) noexcept {
  return static_cast<std::size_t>(std::numeric_limits<long>::max() - position);
}

}  // namespace

// Reading starts at the beginning even when writing appends.
FileStream::FileStream(std::shared_ptr<OpenFile> file) noexcept
    : PositionedStream("file"), fFile(std::move(file)) {}

FileStream::~FileStream() { ReportError(Flush()); }

// Only this stream can make the file shared, and it empties the buffer then.
bool FileStream::IsBuffered() const noexcept {
  return fFile->IsSeekable() && (!fFile->IsWritable() || fFile.use_count() == 1);
}

// A position before the buffer becomes a huge offset.
std::size_t FileStream::Held() const noexcept {
  const auto offset = static_cast<std::size_t>(fPosition - fStart);
  return offset < fFilled ? fFilled - offset : 0;
}

KAPError* FileStream::Read(std::size_t& outCount, unsigned char* buffer,
                           std::size_t count) noexcept {
  if (!fFile->IsReadable()) return fFile->MakeError("read", EBADF);
  const long start = fPosition;
  std::size_t done = 0;
  for (std::size_t some = 1; some != 0 && done < count;) {
    if (KAPError* error = ReadSome(some, buffer + done, count - done)) {
      fPosition = start;
      return error;
    }
    done += some;
    fPosition += static_cast<long>(some);
    if (!fFile->IsSeekable()) break;  // a second read of a pipe may block
  }
  outCount = done;
  return nullptr;
}

KAPError* FileStream::ReadSome(std::size_t& outCount, unsigned char* buffer,
                               std::size_t count) noexcept {
  outCount = 0;
  if (Held() == 0) {
    if (count >= kBufferSize || !IsBuffered()) {
      if (KAPError* error = Flush()) return error;
      return fFile->Read(outCount, fPosition, buffer, std::min(count, RoomAfter(fPosition)));
    }
    if (KAPError* error = Fill()) return error;
  }
  outCount = std::min(count, Held());
  std::memcpy(buffer, fBuffer + (fPosition - fStart), outCount);
  return nullptr;
}

KAPError* FileStream::Fill() noexcept {
  if (KAPError* error = Flush()) return error;
  fStart = fPosition;
  fFilled = 0;
  return fFile->Read(fFilled, fStart, fBuffer, std::min(kBufferSize, RoomAfter(fStart)));
}

KAPError* FileStream::Write(const unsigned char* bytes, std::size_t count) noexcept {
  if (!fFile->IsWritable()) return fFile->MakeError("write", EBADF);
  long position = fPosition;
  if (fFile->IsAppending() && fFile->IsSeekable()) {
    if (KAPError* error = GetSize(position)) return error;
  }
  if (count > RoomAfter(position)) return fFile->MakeError("write", EFBIG);
  if (count >= kBufferSize || !IsBuffered()) return WriteDirectly(position, bytes, count);
  if (!CanAdd(position, count)) {
    if (KAPError* error = Flush()) return error;
    fStart = position;
    fFilled = 0;
    fIsWaiting = true;
  }
  const auto offset = static_cast<std::size_t>(position - fStart);
  if (count != 0) std::memcpy(fBuffer + offset, bytes, count);
  fFilled = std::max(fFilled, offset + count);
  fPosition = position + static_cast<long>(count);
  return nullptr;
}

bool FileStream::CanAdd(long position, std::size_t count) const noexcept {
  const auto offset = static_cast<std::size_t>(position - fStart);
  return fIsWaiting && offset <= fFilled && count <= kBufferSize - offset;
}

KAPError* FileStream::WriteDirectly(long position, const unsigned char* bytes,
                                    std::size_t count) noexcept {
  if (KAPError* error = Flush()) return error;
  fFilled = 0;  // it may hold bytes that are overwritten now
  std::size_t written = 0;
  if (KAPError* error = fFile->Write(written, position, bytes, count)) return error;
  fPosition = position + static_cast<long>(count);
  return nullptr;
}

// Afterwards the buffer holds the bytes as if it had read them. In append mode it does not: another
// program may have written first, and the bytes lie elsewhere.
KAPError* FileStream::Flush() noexcept {
  if (!fIsWaiting) return nullptr;
  std::size_t written = 0;
  if (KAPError* error = fFile->Write(written, fStart, fBuffer, fFilled)) {
    std::memmove(fBuffer, fBuffer + written, fFilled - written);
    fStart += static_cast<long>(written);
    fFilled -= written;
    return error;
  }
  fIsWaiting = false;
  if (fFile->IsAppending()) fFilled = 0;
  return nullptr;
}

KAPError* FileStream::Seek(long offset, int origin) noexcept {
  if (!fFile->IsSeekable()) return fFile->MakeError("seek in", ESPIPE);
  return PositionedStream::Seek(offset, origin);
}

KAPError* FileStream::GetSize(long& outSize) noexcept {
  if (fIsWaiting && fFile->IsAppending()) {
    outSize = fStart + static_cast<long>(fFilled);
    return nullptr;
  }
  if (KAPError* error = fFile->GetSize(outSize)) return error;
  if (fIsWaiting) outSize = std::max(outSize, fStart + static_cast<long>(fFilled));
  return nullptr;
}

KAPError* FileStream::CreateIndependent(std::unique_ptr<Stream>& out, StreamCapability) noexcept {
  if (KAPError* error = Flush()) return error;
  out.reset(new (std::nothrow) FileStream(fFile));
  if (!out) return MemoryError();
  fFilled = 0;
  return nullptr;
}

}  // namespace KAPHost
