#pragma once

#include <cstddef>

#include "kap/KAPClientBase.h"
#include "kap/KAPStreamInterfaces.h"

// Bases of the streams that a component implements itself and hands to the host, by what they can
// do; see CKAPStreamFactory. An operation fails by raising: the exception becomes the host error
// that the stream's user gets. Threads: the host calls one stream from one thread at a time.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

class KAPClientSimpleStream : public CKAPVirtualClientBase {
 public:
  // Reads up to `size` bytes and returns how many; 0 at the end of the input.
  virtual std::size_t Read(unsigned char* buffer, std::size_t size) = 0;
  // Writes all of them.
  virtual void Write(const unsigned char* buffer, std::size_t size) = 0;
};

class KAPClientRewindableStream : public KAPClientSimpleStream {
 public:
  // A new stream over the same data with a position of its own.
  virtual TKAPClientObject<KAPClientRewindableStream> CreateIndependentlyRewindableStream() = 0;
  virtual void Rewind() = 0;
};

class KAPClientPositionableStream : public KAPClientRewindableStream {
 public:
  // What CreateIndependentlyPositionableStream makes. An override too makes a positionable stream:
  // the host takes the new one to be of its maker's kind.
  TKAPClientObject<KAPClientRewindableStream> CreateIndependentlyRewindableStream() override;
  // Seeks to the start.
  void Rewind() override;

  // Not offered unless overridden: the core unknown error.
  virtual TKAPClientObject<KAPClientPositionableStream> CreateIndependentlyPositionableStream();
  // `origin`: a KAPSeekOrigin.
  virtual void Seek(long offset, int origin) = 0;
  virtual long Mark() = 0;  // the position, in bytes from the start
};

}  // namespace KAP_T_MT
