// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "kap/KAPClientStream.h"
#include "kap/KAPContainer.h"
#include "kap/KAPMemory.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPStreamInterfaces.h"

// References to streams of the host or of another component, by what they can do: read and write,
// rewind, move anywhere.
//
//   CKAPPositionableStream stream = CKAPPositionableStream::New();  // in memory
//   stream.Write(bytes, size);
//   stream.Rewind();
//   unsigned char buffer[512];
//   while (const std::size_t count = stream.Read(buffer, sizeof buffer)) Use(buffer, count);
//
// A component's own stream object (KAPClientStream.h) becomes a stream in the same way:
//
//   CKAPSimpleStream zeros(KAPNewClient<Zeros>());
//
// A reference is the handle and nothing else. Each call asks the list of method tables for its
// method, which costs a few loads; a table kept in the object would not follow the host's changes.
//
// Ownership: a reference holds one reference to the container, released on destruction; copies
//   share the stream and its position. After the binding, at process exit as well, the release is a
//   no-op (KAPClientKill): what the host has buffered may be lost. A client object that is handed
//   over belongs to the host afterwards; if the host makes no stream for it, it is deleted.
// Errors: throws the error that the stream returns. At construction, CKAPError "invalid container"
//   for null or a container without the methods, and "couldn't get signature" for a container
//   without a primary instance. "invalid container" for calls on a reference that was moved from. A
//   constructor that throws releases the reference it added or adopted. Where a new stream is made,
//   the error that the host returns; "invalid container" without a stream factory; the core unknown
//   error for a null client object.
// Threads: one thread at a time per stream.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The method tables of all implementations of streams, deleted when the runtime is unbound. They
// hold no streams: each reference releases its own, a no-op once the runtime is unbound.
class CKAPSimpleStreamTerminate : public TDelVTabList<KAPSimpleStreamInterface> {};
class CKAPRewindableStreamTerminate : public TDelVTabList<KAPRewindableStreamInterface> {};
class CKAPPositionableStreamTerminate : public TDelVTabList<KAPPositionableStreamInterface> {};

// A reference to a stream that reads and writes.
class CKAPSimpleStream : public TKAPTypedContainer<CKAPSimpleStream, KAPContainerBaseGeneric> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;
  // A stream that forwards to the client object.
  explicit CKAPSimpleStream(TKAPClientObject<KAPClientSimpleStream> client);

  // Reads up to `size` bytes and returns how many; 0 at the end of the input, which is not an
  // error. A short read does not mean the end of the input. CKAPError "a stream returned more than
  // was asked for" for a stream that claims to have overrun the buffer.
  [[nodiscard]] std::size_t Read(unsigned char* buffer, std::size_t size);
  // Writes all `size` bytes. After an error an unknown part of them is written.
  void Write(const unsigned char* buffer, std::size_t size);

  // Throws as the constructors do unless the container has the methods.
  static void CheckMethods(KAPSimpleStream* handle) { fSimpleTerm.InitVTab(handle); }
  static void CheckMethods(TKAPNewHandle<KAPSimpleStream>) = delete;

 private:
  static constinit CKAPSimpleStreamTerminate fSimpleTerm;
};

// A reference to a stream that also moves to its start.
class CKAPRewindableStream : public TKAPTypedContainer<CKAPRewindableStream, CKAPSimpleStream> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;
  // A stream that forwards to the client object.
  explicit CKAPRewindableStream(TKAPClientObject<KAPClientRewindableStream> client);

  // A new stream over the same data with a position of its own.
  [[nodiscard]] CKAPRewindableStream CreateIndependentlyRewindableStream();
  void Rewind();  // to the start

  // Throws as the constructors do unless the container has the methods.
  static void CheckMethods(KAPRewindableStream* handle) { fRewindableTerm.InitVTab(handle); }
  static void CheckMethods(TKAPNewHandle<KAPRewindableStream>) = delete;

 private:
  static constinit CKAPRewindableStreamTerminate fRewindableTerm;
};

// A reference to a stream that also moves anywhere.
class CKAPPositionableStream
    : public TKAPTypedContainer<CKAPPositionableStream, CKAPRewindableStream> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;
  // A stream over a file, with a mode of fopen.
  CKAPPositionableStream(const char* path, const char* mode);
  // The same for a path without a terminator. TOQException for one that contains a zero byte.
  CKAPPositionableStream(std::string_view path, const char* mode)
      : CKAPPositionableStream(KAPTerminatedText(path).Text(), mode) {}
  // A stream that forwards to the client object.
  explicit CKAPPositionableStream(TKAPClientObject<KAPClientPositionableStream> client);
  // A new, empty memory stream. Deprecated: New.
  KAP_DEPRECATED("use CKAPPositionableStream::New()") CKAPPositionableStream();
  [[nodiscard]] static CKAPPositionableStream New();
  // A read-only stream over a copy of the bytes.
  [[nodiscard]] static CKAPPositionableStream New(const unsigned char* data, std::size_t size);

  // A new stream over the same data with a position of its own.
  [[nodiscard]] CKAPPositionableStream CreateIndependentlyPositionableStream();
  [[nodiscard]] long Mark();           // the position, in bytes from the start
  void Seek(long offset, int origin);  // `origin`: a KAPSeekOrigin

  // Throws as the constructors do unless the container has the methods.
  static void CheckMethods(KAPPositionableStream* handle) { fPositionableTerm.InitVTab(handle); }
  static void CheckMethods(TKAPNewHandle<KAPPositionableStream>) = delete;

 private:
  static constinit CKAPPositionableStreamTerminate fPositionableTerm;
};

}  // namespace KAP_T_MT
