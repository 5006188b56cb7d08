#pragma once

#include <cstddef>

#include "kap/KAPContainer.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPStreamInterfaces.h"

// References to streams of the host, or of another component, by what they can do.
// Ownership: each holds one reference, released on destruction; copies share the stream and its
//   position.
// Errors: an error of the host is raised. CKAPError "invalid container" for a handle that does not
//   offer the methods, null included, and for calls on a reference that was moved from.
// Threads: one stream is used by one thread at a time.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The method tables of all implementations of streams, emptied when the runtime unbinds itself.
class CKAPSimpleStreamTerminate : public TDelVTabList<KAPSimpleStreamInterface> {};
class CKAPRewindableStreamTerminate : public TDelVTabList<KAPRewindableStreamInterface> {};
class CKAPPositionableStreamTerminate : public TDelVTabList<KAPPositionableStreamInterface> {};

class CKAPSimpleStream : public KAPContainerBaseGeneric {
 public:
  explicit CKAPSimpleStream(KAPSimpleStream* handle);         // adds a reference
  CKAPSimpleStream(KAPSimpleStream* handle, KAPAdopt adopt);  // takes the reference over

  // Reads up to `size` bytes and returns how many; 0 at the end of the input.
  std::size_t Read(unsigned char* buffer, std::size_t size);
  // Writes all of them.
  void Write(const unsigned char* buffer, std::size_t size);

 private:
  static constinit CKAPSimpleStreamTerminate fSimpleTerm;
};

class CKAPRewindableStream : public CKAPSimpleStream {
 public:
  explicit CKAPRewindableStream(KAPRewindableStream* handle);
  CKAPRewindableStream(KAPRewindableStream* handle, KAPAdopt adopt);

  // A stream over the same data with a position of its own.
  CKAPRewindableStream CreateIndependentlyRewindableStream();
  void Rewind();

 private:
  static constinit CKAPRewindableStreamTerminate fRewindableTerm;
};

class CKAPPositionableStream : public CKAPRewindableStream {
 public:
  CKAPPositionableStream();  // a new, empty memory stream
  // A file stream; `mode` as for fopen.
  CKAPPositionableStream(const char* path, const char* mode);
  explicit CKAPPositionableStream(KAPPositionableStream* handle);
  CKAPPositionableStream(KAPPositionableStream* handle, KAPAdopt adopt);

  CKAPPositionableStream CreateIndependentlyPositionableStream();
  long Mark();                         // the position, in bytes from the start
  void Seek(long offset, int origin);  // `origin`: a KAPSeekOrigin

 private:
  static constinit CKAPPositionableStreamTerminate fPositionableTerm;
};

}  // namespace KAP_T_MT
