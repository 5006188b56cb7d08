// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPTypes.h"

// A host of one's own: the binder, and the four interfaces that every component needs to bind
// (strings, errors, memory, containers). Enough for property objects, their text notation and
// directories.
//
// Limits: for one thread. Streams, shared buffers, caches, filters and progress are missing, and a
// component that needs one of them gets an error; so does one that makes a container with several
// instances. What a component reports goes to standard output. Nothing checks handles: using one
// after its last release is undefined. Running out of memory is an error for the component.

// The callback for components.
void* OwnHostGetProc(const char* interfaceName, const char* methodName,
                     const char* procName) noexcept;

// Registers the host's interfaces. Once, before the first look-up. Throws std::bad_alloc.
void OwnHostStart();

// The number of references to atoms, errors, blocks and containers that components hold.
int OwnHostHeld() noexcept;
