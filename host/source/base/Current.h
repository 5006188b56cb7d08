// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

namespace KAPHost {

// A part of the one live host, such as its binder. Procedures are plain functions without a context
// and reach the part through here; the host itself stays above them. Null when there is no host.
template <class Part>
inline constinit std::atomic<Part*> gCurrent{nullptr};

template <class Part>
Part* Current() noexcept {
  return gCurrent<Part>.load(std::memory_order_acquire);
}

}  // namespace KAPHost
