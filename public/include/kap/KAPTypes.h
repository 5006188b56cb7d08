#pragma once

#include <cstddef>

// The opaque handles that cross the binder. A handle is owned by the host: nobody looks behind it,
// except for the two words that a container record keeps at its published offset (see
// KAPContainer.h in this folder).

struct KAPStringAtom;  // an interned, reference-counted 8-bit text
struct KAPError;       // a reference-counted error: message, component, code
struct KAPContainer;   // a reference-counted record that holds one or more instances

// Every property object and every iterator is a container; the names say which kind a procedure
// asks for.
using POSObject = KAPContainer;
using POSNumber = KAPContainer;
using POSString = KAPContainer;
using POSUnicodeString = KAPContainer;
using POSBinData = KAPContainer;
using POSRawPointer = KAPContainer;
using POSArray = KAPContainer;
using POSDict = KAPContainer;
using POSDictIterator = KAPContainer;

// Gives back what `data` points to. Called once; must not throw.
using KAPDeleteProc = void (*)(void* data);

// The one callback through which a component reaches the binder: the address of the procedure that
// is registered under these three names, or null when there is none. Callable from any thread.
using KAPGetProcAddressProc = void* (*)(const char* interfaceName, const char* methodName,
                                        const char* procName);
