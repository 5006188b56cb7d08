// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPTypes.h"

// A host of one's own: the binder, and the interfaces without which no component binds itself
// (strings, errors, memory, containers). Enough for property objects, their text notation and
// directories. Streams, shared buffers, caches, filters and progress are missing, and a component
// that needs one of them gets an error. For one thread.

// The callback for components.
void* OwnHostGetProc(const char* interfaceName, const char* methodName, const char* procName);

// Registers the host's interfaces. Once, before the first look-up.
void OwnHostStart();

// The number of atoms, errors, blocks and containers that components hold.
int OwnHostHeld();
