// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

// Every header includes this one before it uses C++20. The missing file stops the compiler here,
// before hundreds of errors that all mean the same.
#if __cplusplus < 202002L
#error "KAPUtils needs C++20: compile with -std=c++20"
#include <compile-with-std=c++20>
#endif

// The opaque handles and the plain C types that cross the binder.
//
// A handle points to a record of the host. Components neither read nor write the record; they pass
// the handle to the procedures of the interface it belongs to. The one exception is the container
// record, which publishes two words (KAPContainerInterface.h).
//
// These names live outside the namespace of the runtime: two components that exchange a handle
// must mean the same type by it.

struct KAPStringAtom;  // an interned, reference-counted 8-bit string
struct KAPError;       // a reference-counted error: message, component, code
struct KAPContainer;   // a reference-counted record that holds one or more instances

struct KAPSharedBuffer;         // a reference-counted block of bytes
struct KAPCacheID;              // the reference-counted identity of a cached item
struct KAPCacheSet;             // a reference-counted set of identities
struct KAPCachePurge;           // a purge in progress
struct KAPDataSink;             // a reference-counted receiver of bytes
struct KAPProgress;             // a reference-counted receiver of progress
using KAPFilter = KAPDataSink;  // a sink with a target; accepted wherever a sink is

// Streams, property objects and the library's other objects are containers. The aliases document
// which kind a procedure expects; the compiler does not distinguish them, so every procedure
// checks.
using KAPSimpleStream = KAPContainer;
using KAPRewindableStream = KAPContainer;
using KAPPositionableStream = KAPContainer;
using KAPDataStore = KAPContainer;
using KAPDataBlockStream = KAPContainer;
using POSObject = KAPContainer;
using POSNumber = KAPContainer;
using POSString = KAPContainer;
using POSUnicodeString = KAPContainer;
using POSBinData = KAPContainer;
using POSRawPointer = KAPContainer;
using POSArray = KAPContainer;
using POSDict = KAPContainer;
using POSDictIterator = KAPContainer;
using POSStreamer = KAPContainer;
using POSValidator = KAPContainer;
using KAPUtilsDir = KAPContainer;

// Releases what `data` points to. Called once, on any thread; must not throw.
using KAPDeleteProc = void (*)(void* data);

// A run of text that a data store lends. The receiver calls `release` once with `clientData` when
// it no longer needs the text; a null `release` means that there is nothing to call.
struct KAPDataBlock {
  // Borrowed until the release.
  const char* text;
  std::size_t size;  // in bytes; the text has no terminator
  // Passed to `release`; of no meaning to the receiver.
  void* clientData;
  // May be null.
  void (*release)(void* clientData);
};

// Components of different compilers and versions agree on these.
static_assert(sizeof(bool) == 1 && sizeof(int) == 4 && sizeof(long) == 8);
static_assert(sizeof(std::size_t) == 8 && sizeof(void*) == 8 && sizeof(void (*)()) == 8);
static_assert(offsetof(KAPDataBlock, text) == 0 && offsetof(KAPDataBlock, size) == 8);
static_assert(offsetof(KAPDataBlock, clientData) == 16 && offsetof(KAPDataBlock, release) == 24);
static_assert(sizeof(KAPDataBlock) == 32);

// The one callback through which a component reaches the binder. Returns the address of the
// procedure registered under the three names, or null when there is none. [any thread]
using KAPGetProcAddressProc = void* (*)(const char* interfaceName, const char* methodName,
                                        const char* procName);
