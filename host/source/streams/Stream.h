// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>

#include "kap/KAPTypes.h"

namespace KAPHost {

// What a stream can do; each capability includes those before it.
enum class StreamCapability { kSimple, kRewindable, kPositionable };

// A stream of the host: the primary instance of a container. Callers check arguments, set result
// places to 0 and call only what the stream is capable of. A method that fails leaves the result at
// 0 and the position where it was.
// Threads: one at a time.
class Stream {
 public:
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  virtual ~Stream() = default;

  StreamCapability Capability() const noexcept { return fCapability; }
  // The name in the log.
  const char* Kind() const noexcept { return fKind; }

  virtual KAPError* Read(std::size_t& outCount, unsigned char* buffer,
                         std::size_t count) noexcept = 0;
  virtual KAPError* Write(const unsigned char* bytes, std::size_t count) noexcept = 0;
  virtual KAPError* Rewind() noexcept = 0;
  virtual KAPError* Mark(long& outPosition) noexcept = 0;
  virtual KAPError* Seek(long offset, int origin) noexcept = 0;
  // A stream over the same data with a position of its own, at the start, and at least this
  // capability.
  virtual KAPError* CreateIndependent(std::unique_ptr<Stream>& out,
                                      StreamCapability capability) noexcept = 0;

 protected:
  Stream(StreamCapability capability, const char* kind) noexcept
      : fCapability(capability), fKind(kind) {}

 private:
  const StreamCapability fCapability;
  const char* const fKind;
};

}  // namespace KAPHost
