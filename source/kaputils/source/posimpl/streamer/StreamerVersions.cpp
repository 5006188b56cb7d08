// SPDX-License-Identifier: MIT
#include "posimpl/streamer/StreamerVersions.h"

#include <iterator>

#include "pos/POSException.h"
#include "posimpl/streamer/POSStreamerTypeA.h"

namespace NPOSStreamerImpl {

namespace {

StreamerBase::Owner createStreamer_TypeAVersion10() {
  return KAP_T_MT::KAPNewClient<NTypeAImpl::Version10>();
}

using CreatorProc = StreamerBase::Owner (*)();
constexpr CreatorProc fStreamerCreatorProcs[] = {&createStreamer_TypeAVersion10};

}  // namespace

std::size_t GetNumStreamerCreatorProcs() noexcept { return std::size(fStreamerCreatorProcs); }

// Deliberate: only the default is compared.
StreamerBase::Owner LookupStreamer(std::string_view version) {
  StreamerBase::Owner streamer = fStreamerCreatorProcs[0]();
  if (version != streamer->GetVersion()) {
    throw KAP_T_MT::POSException("StreamerBase::LookupStreamer unrecognized version");
  }
  return streamer;
}

const char* GetDefaultVersion() { return fStreamerCreatorProcs[0]()->GetVersion(); }

}  // namespace NPOSStreamerImpl
