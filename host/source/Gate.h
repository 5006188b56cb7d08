#pragma once

#include <atomic>
#include <cstddef>

#include "kaphost/Refusal.h"

namespace KAPHost {

// Asked at the start of every call that can be refused. The one word is zero in everyday use: a
// host lives and refuses nothing.
enum GateBits : unsigned { kGateClosed = 1, kGateArmed = 2 };

extern constinit std::atomic<unsigned> gGate;

inline bool IsClosed() noexcept {
  return (gGate.load(std::memory_order_relaxed) & kGateClosed) != 0;
}

bool IsRefusedSlowly(Call kind, std::size_t blockSize) noexcept;

inline bool IsRefused(Call kind, std::size_t blockSize = 0) noexcept {
  return gGate.load(std::memory_order_relaxed) != 0 && IsRefusedSlowly(kind, blockSize);
}

}  // namespace KAPHost
