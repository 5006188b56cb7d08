#pragma once

#include <cstddef>

// The opaque handles that cross the binder. A handle is owned by the host: nobody looks behind it,
// except for the two words that a container record keeps at its published offset (see
// KAPContainer.h in this folder).

struct KAPStringAtom;  // an interned, reference-counted 8-bit text
struct KAPError;       // a reference-counted error: message, component, code
struct KAPContainer;   // a reference-counted record that holds one or more instances

struct KAPSharedBuffer;         // a reference-counted block of bytes
struct KAPCacheID;              // a reference-counted identity under which a cached item is filed
struct KAPCacheSet;             // a reference-counted group of identities
struct KAPCachePurge;           // a purge in progress
struct KAPDataSink;             // a reference-counted receiver of bytes
struct KAPProgress;             // a reference-counted receiver of progress
using KAPFilter = KAPDataSink;  // a sink with a target: it stands wherever a sink is asked for

// Streams, property objects and the library's other objects are containers; the names say which
// kind a procedure asks for.
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

// Gives back what `data` points to. Called once; must not throw.
using KAPDeleteProc = void (*)(void* data);

// A run of text lent by a data store. Whoever received it calls `release` once with `clientData`.
struct KAPDataBlock {
  const char* text;
  std::size_t size;
  void* clientData;
  void (*release)(void* clientData);
};

// The one callback through which a component reaches the binder: the address of the procedure that
// is registered under these three names, or null when there is none. Callable from any thread.
using KAPGetProcAddressProc = void* (*)(const char* interfaceName, const char* methodName,
                                        const char* procName);
