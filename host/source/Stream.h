#pragma once

#include <cstddef>
#include <memory>

#include "kap/KAPTypes.h"

namespace KAPHost {

// How far the methods of a stream reach; each capability includes those before it.
enum class StreamCapability { kSimple, kRewindable, kPositionable };

// A stream of the host: the primary instance of a container. Arguments have been checked and result
// places are 0 when a method is called; only methods within the stream's capability are called. A
// method that fails leaves the result at 0 and the position where it was.
// Threads: one at a time.
class Stream {
 public:
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  virtual ~Stream() = default;

  StreamCapability Capability() const noexcept { return fCapability; }
  // As it is logged.
  const char* Kind() const noexcept { return fKind; }

  virtual KAPError* Read(std::size_t& outCount, unsigned char* buffer,
                         std::size_t count) noexcept = 0;
  virtual KAPError* Write(const unsigned char* bytes, std::size_t count) noexcept = 0;
  virtual KAPError* Rewind() noexcept = 0;
  virtual KAPError* Mark(long& outPosition) noexcept = 0;
  virtual KAPError* Seek(long offset, int origin) noexcept = 0;
  // A stream over the same data with a position of its own, at the start; at least of this capability.
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
