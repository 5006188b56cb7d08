// SPDX-License-Identifier: MIT
#include "files/Output.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include "base/Failure.h"

namespace PosUtil {

namespace {

[[noreturn]] void ThrowLost(int error) {
  if (error == EPIPE) throw ClosedPipe();
  throw Failure(std::string("cannot write the output: ") + std::strerror(error));
}

// The process that made a pipe may have made it non-blocking for every user of it.
void WaitForRoom(int descriptor) {
  pollfd waiting = {descriptor, POLLOUT, 0};
  if (::poll(&waiting, 1, -1) < 0 && errno != EINTR) ThrowLost(errno);
  errno = EAGAIN;
}

}  // namespace

void Output::PutMany(char character, std::size_t count) {
  while (count > 0) {
    if (fUsed == kCapacity) MakeRoom();
    const std::size_t chunk = std::min(count, kCapacity - fUsed);
    std::memset(fBuffer.get() + fUsed, character, chunk);
    fUsed += chunk;
    count -= chunk;
  }
}

void Output::PutLong(std::string_view text) {
  MakeRoom();
  if (text.size() < kCapacity) return Put(text);
  if (fHolds) {
    fHeld += text;
  } else {
    Write(text.data(), text.size());
  }
}

void Output::MakeRoom() {
  if (!fHolds) return Flush();
  const std::size_t complete = std::exchange(fComplete, 0);
  Write(fBuffer.get(), complete);
  fHeld.append(fBuffer.get() + complete, std::exchange(fUsed, 0) - complete);
}

void Output::EndDocument() {
  if (!fHeld.empty()) Flush();
  fComplete = fUsed;
}

void Output::DropIncomplete() {
  fHeld.clear();
  fUsed = fComplete;
}

void Output::Flush() {
  const std::string held = std::exchange(fHeld, {});
  const std::size_t size = std::exchange(fUsed, 0);
  fComplete = 0;
  Write(held.data(), held.size());
  Write(fBuffer.get(), size);
}

void Output::Finish() {
  Flush();
  // A closed standard output is an error only if something was written to it.
  if (::close(fDescriptor) != 0 && errno != EBADF && errno != EINTR) ThrowLost(errno);
}

void Output::Write(const char* data, std::size_t size) {
  if (fProgress) fProgress->Advance(size);
  fFlushed += size;
  while (size > 0) {
    const ssize_t written = ::write(fDescriptor, data, size);
    if (written == 0) ThrowLost(EIO);
    if (written < 0) {
      if (errno == EAGAIN) WaitForRoom(fDescriptor);
      if (errno != EINTR && errno != EAGAIN) ThrowLost(errno);
      continue;
    }
    data += written;
    size -= static_cast<std::size_t>(written);
  }
}

}  // namespace PosUtil
