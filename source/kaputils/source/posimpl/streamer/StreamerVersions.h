// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "posimpl/streamer/StreamerBase.h"

namespace NPOSStreamerImpl {

// The versions that documents are written and read in. The first one is the default.

// A streamer of that version; POSException "StreamerBase::LookupStreamer unrecognized version".
StreamerBase::Owner LookupStreamer(std::string_view version);
const char* GetDefaultVersion();
std::size_t GetNumStreamerCreatorProcs() noexcept;

}  // namespace NPOSStreamerImpl
