#pragma once

#include <atomic>
#include <cstddef>

#include "kap/KAPInterface.h"

namespace KAPHost {

using KAP_T_MT::KAPFault;

// Asked at the start of every call that can be refused. The one word is zero in everyday use: a
// host lives, refuses nothing and logs nothing.
enum GateBits : unsigned { kGateClosed = 1, kGateArmed = 2, kGateLogging = 4 };

extern constinit std::atomic<unsigned> gGate;

inline bool IsClosed() noexcept {
  return (gGate.load(std::memory_order_relaxed) & kGateClosed) != 0;
}

bool FailsSlowly(KAPFault kind, std::size_t blockSize) noexcept;

inline bool Fails(KAPFault kind, std::size_t blockSize = 0) noexcept {
  return (gGate.load(std::memory_order_relaxed) & (kGateClosed | kGateArmed)) != 0 &&
         FailsSlowly(kind, blockSize);
}

std::size_t ReadLimitSlowly() noexcept;

// The most bytes that a stream may give in one read.
inline std::size_t ReadLimit() noexcept {
  return (gGate.load(std::memory_order_relaxed) & kGateArmed) == 0 ? ~std::size_t{0}
                                                                   : ReadLimitSlowly();
}

// Whether the calls of streams are logged.
inline bool IsLogging() noexcept {
  return (gGate.load(std::memory_order_relaxed) & kGateLogging) != 0;
}

}  // namespace KAPHost
