// SPDX-License-Identifier: MIT
#pragma once

#include "containers/Containers.h"
#include "streams/Stream.h"

namespace KAPHost {

// The interface of containers whose streams have this capability. It includes the methods of lesser
// capabilities, so that a container needs no equipment.
const char* StreamInterfaceName(StreamCapability capability) noexcept;

// Makes a container that owns the stream: one reference. On an error the stream stays the caller's.
KAPError* ContainStream(KAPContainer** out, std::unique_ptr<Stream>& stream) noexcept;

// Null for a handle that is not a stream. The clone of a stream's container is a stream.
Stream* StreamOf(const KAPContainer* handle) noexcept;

}  // namespace KAPHost
