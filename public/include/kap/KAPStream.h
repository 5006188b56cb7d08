#pragma once

#include <cstddef>

#include "kap/KAPContainer.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPStreamInterfaces.h"

// References to streams of the host or of another component, by what they can do: read and write,
// rewind, move anywhere.
//
//   CKAPPositionableStream stream;                  // a new memory stream
//   stream.Write(bytes, size);
//   stream.Rewind();
//   unsigned char buffer[512];
//   while (const std::size_t count = stream.Read(buffer, sizeof buffer)) Use(buffer, count);
//
// Ownership: a reference holds one reference to the container, released on destruction; copies
//   share the stream and its position.
// Errors: throws the error that the stream returns. CKAPError "invalid container" at construction
//   for null or a container without the methods, and for calls on a reference that was moved from.
//   A constructor that throws releases the reference it added or adopted.
// Threads: one thread at a time per stream.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The method tables of all implementations of streams, released when the binding ends.
class CKAPSimpleStreamTerminate : public TDelVTabList<KAPSimpleStreamInterface> {};
class CKAPRewindableStreamTerminate : public TDelVTabList<KAPRewindableStreamInterface> {};
class CKAPPositionableStreamTerminate : public TDelVTabList<KAPPositionableStreamInterface> {};

// A reference to a stream that reads and writes.
class CKAPSimpleStream : public TKAPTypedContainer<CKAPSimpleStream, KAPContainerBaseGeneric> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;

  // Reads up to `size` bytes and returns how many; 0 at the end of the input, which is not an
  // error. A short read does not mean the end of the input. CKAPError "a stream returned more than
  // was asked for" for a stream that claims to have overrun the buffer.
  std::size_t Read(unsigned char* buffer, std::size_t size);
  // Writes all `size` bytes. After an error an unknown part of them is written.
  void Write(const unsigned char* buffer, std::size_t size);

  static void CheckMethods(KAPSimpleStream* handle) { fSimpleTerm.InitVTab(handle); }

 private:
  static constinit CKAPSimpleStreamTerminate fSimpleTerm;
};

// A reference to a stream that also moves to its start.
class CKAPRewindableStream : public TKAPTypedContainer<CKAPRewindableStream, CKAPSimpleStream> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;

  // A new stream over the same data with a position of its own.
  CKAPRewindableStream CreateIndependentlyRewindableStream();
  void Rewind();

  static void CheckMethods(KAPRewindableStream* handle) { fRewindableTerm.InitVTab(handle); }

 private:
  static constinit CKAPRewindableStreamTerminate fRewindableTerm;
};

// A reference to a stream that also moves anywhere.
class CKAPPositionableStream
    : public TKAPTypedContainer<CKAPPositionableStream, CKAPRewindableStream> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;
  // A new, empty memory stream, and a new stream over a file, with a mode of fopen. Without a
  // stream factory: CKAPError "invalid container".
  CKAPPositionableStream();
  CKAPPositionableStream(const char* path, const char* mode);

  // A new stream over the same data with a position of its own.
  CKAPPositionableStream CreateIndependentlyPositionableStream();
  long Mark();                         // the position, in bytes from the start
  void Seek(long offset, int origin);  // `origin`: a KAPSeekOrigin

  static void CheckMethods(KAPPositionableStream* handle) { fPositionableTerm.InitVTab(handle); }

 private:
  static constinit CKAPPositionableStreamTerminate fPositionableTerm;
};

}  // namespace KAP_T_MT
