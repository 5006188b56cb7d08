#include "Gate.h"

#include "HostState.h"

namespace KAPHost {

constinit std::atomic<unsigned> gGate{kGateClosed};

bool FailsSlowly(KAPFault kind, std::size_t blockSize) noexcept {
  HostState* state = HostState::Current();
  return state == nullptr || state->fFaultRules.Fails(kind, blockSize);
}

std::size_t ReadLimitSlowly() noexcept {
  HostState* state = HostState::Current();
  return state == nullptr ? 0 : state->fFaultRules.ReadLimit();
}

}  // namespace KAPHost
