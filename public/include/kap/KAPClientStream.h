// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPClientBase.h"
#include "kap/KAPStreamInterfaces.h"

// Bases of the streams that a component implements itself and hands to the host (KAPStream.h), by
// what they can do: read and write, rewind, move anywhere.
//
//   struct Zeros : KAPClientSimpleStream {
//     std::size_t Read(unsigned char* buffer, std::size_t size) override {
//       std::memset(buffer, 0, size);
//       return size;
//     }
//     void Write(const unsigned char*, std::size_t) override { throw TOQException("read-only"); }
//   };
//   CKAPSimpleStream zeros(KAPNewClient<Zeros>());
//
// Ownership: the host owns an object that was handed over, and deletes it with its stream.
// Errors: an operation fails by throwing. The exception becomes the host error that the user of the
//   stream receives (KAPClientProcs.h). What the destructor throws is reported by the host.
// Threads: the host calls one stream from one thread at a time.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Reads and writes.
class KAPClientSimpleStream : public CKAPVirtualClientBase {
 public:
  // Reads up to `size` bytes and returns how many; 0 at the end of the input, which is not an
  // error.
  virtual std::size_t Read(unsigned char* buffer, std::size_t size) = 0;
  // Writes all `size` bytes, or throws.
  virtual void Write(const unsigned char* buffer, std::size_t size) = 0;
};

// Also moves to its start.
class KAPClientRewindableStream : public KAPClientSimpleStream {
 public:
  // A new stream over the same data with a position of its own.
  virtual TKAPClientObject<KAPClientRewindableStream> CreateIndependentlyRewindableStream() = 0;
  virtual void Rewind() = 0;  // to the start
};

// Also moves anywhere, in bytes.
class KAPClientPositionableStream : public KAPClientRewindableStream {
 public:
  // Calls CreateIndependentlyPositionableStream. An override must also return a positionable
  // stream, because the host calls the new object with the procedures of the old one: any other is
  // deleted, and the host gets TOQException "the new stream cannot be positioned" as an error.
  TKAPClientObject<KAPClientRewindableStream> CreateIndependentlyRewindableStream() override;
  // Calls Seek(0, kKAPSeekFromStart).
  void Rewind() override;

  // A new stream over the same data with a position of its own. Unless overridden, throws the core
  // unknown error: not every stream can be read in two places.
  virtual TKAPClientObject<KAPClientPositionableStream> CreateIndependentlyPositionableStream();
  // Moves the position; `origin` is a KAPSeekOrigin.
  virtual void Seek(long offset, int origin) = 0;
  virtual long Mark() = 0;  // the position, in bytes from the start

  // For the runtime: calls CreateIndependentlyRewindableStream, and checks that the new stream can
  // be positioned.
  TKAPClientObject<KAPClientPositionableStream> CreateCheckedRewindableStream();
};

}  // namespace KAP_T_MT
