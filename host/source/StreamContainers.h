#pragma once

#include "Containers.h"
#include "Stream.h"

namespace KAPHost {

// The interface that containers of streams of this capability offer. It includes the methods of the
// shorter ones, so that a container needs no equipment.
const char* StreamInterfaceName(StreamCapability capability) noexcept;

// Puts a stream into a container, with one reference for the caller. On an error the stream stays
// where it is.
KAPError* ContainStream(KAPContainer** out, std::unique_ptr<Stream>& stream) noexcept;

// Null for a handle that is no stream. The clone of a stream's container is a stream.
Stream* StreamOf(const KAPContainer* handle) noexcept;

}  // namespace KAPHost
