// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>

#include "kap/KAPInterface.h"

namespace KAPHost {

using KAP_T_MT::KAPFault;

// One word that every call reads which can fail on purpose. It is zero in everyday use, when a host
// lives, injects no faults, logs nothing, checks nothing and follows no handles: all of that costs
// nothing then.
enum GateBits : unsigned {
  kGateClosed = 1,
  kGateArmed = 2,
  kGateLogging = 4,
  kGateChecking = 8,
  kGatePlain = 16,
  kGateFollowing = 32  // a ledger knows the handles that components hold
};

[[gnu::visibility("hidden")]] extern constinit std::atomic<unsigned> gGate;

inline bool HasGateBits(unsigned bits) noexcept {
  return (gGate.load(std::memory_order_relaxed) & bits) != 0;
}

// Whether there is no host.
inline bool IsClosed() noexcept { return HasGateBits(kGateClosed); }

// Whether the calls of streams are logged.
inline bool IsLogging() noexcept { return HasGateBits(kGateLogging); }

bool FailsSlowly(KAPFault kind, std::size_t blockSize) noexcept;

// Whether Fails has anything to do.
inline bool MayFail() noexcept { return HasGateBits(kGateClosed | kGateArmed); }

// Counts the call and returns whether it must fail. Without a host every call fails.
inline bool Fails(KAPFault kind, std::size_t blockSize = 0) noexcept {
  return MayFail() && FailsSlowly(kind, blockSize);
}

std::size_t ReadLimitSlowly() noexcept;

// The most bytes that a stream may return from one read.
inline std::size_t ReadLimit() noexcept {
  return HasGateBits(kGateArmed) ? ReadLimitSlowly() : ~std::size_t{0};
}

}  // namespace KAPHost
