#include "posimpl/streamer/StreamerBase.h"

#include <iterator>

#include "pos/POSException.h"
#include "posimpl/streamer/POSStreamerTypeA.h"

namespace NPOSStreamerImpl {

constinit const StreamerBase::CreatorProc StreamerBase::fStreamerCreatorProcs[] = {
    &createStreamer_TypeAVersion10};

StreamerBase::Owner StreamerBase::createStreamer_TypeAVersion10() {
  return KAP_T_MT::KAPNewClient<NTypeAImpl::Version10>();
}

std::size_t StreamerBase::GetNumStreamerCreatorProcs() noexcept {
  return std::size(fStreamerCreatorProcs);
}

StreamerBase::Owner StreamerBase::LookupStreamer(std::string_view version) {
  Owner streamer = fStreamerCreatorProcs[0]();
  if (version != streamer->GetVersion()) {
    throw KAP_T_MT::POSException("StreamerBase::LookupStreamer unrecognized version");
  }
  return streamer;
}

const char* StreamerBase::GetDefaultVersion() { return fStreamerCreatorProcs[0]()->GetVersion(); }

}  // namespace NPOSStreamerImpl
