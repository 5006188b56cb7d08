// SPDX-License-Identifier: MIT
#include "posimpl/base/NestingGuard.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pos/POSException.h"

namespace NPOSObjectImpl {

namespace {

// What a level may use before the next check, procedures of the host and of other components
// included: a quarter of the stack within these bounds. A fixed number of levels would be too few
// for a large stack and too many for a small one.
constexpr std::size_t kLargestReserve = 256 * 1024;
constexpr std::size_t kSmallestReserve = 12 * 1024;  // throwing takes half of it
constexpr std::size_t kReservedPart = 4;

constexpr unsigned int kUnknownStackLevels = 64;

}  // namespace

// Not inline: see build/kaputils/CMakeLists.txt on thread-local variables.
[[gnu::noinline]] NestingStack& NestingStack::OnThisThread() noexcept {
  static thread_local constinit NestingStack tStack;
  return tStack;
}

void NestingStack::Ask() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void* low = nullptr;
  std::size_t size = 0;
  if (pthread_attr_getstack(&attributes, &low, &size) == 0) {
    fLow = reinterpret_cast<std::uintptr_t>(low);
    fHigh = fLow + size;
    fLimit = fLow + std::clamp(size / kReservedPart, kSmallestReserve, kLargestReserve);
    fRoom = fHigh > fLimit ? fHigh - fLimit : 0;  // a tiny stack has no room at all
  }
  pthread_attr_destroy(&attributes);
}

// Asking can fail for a while: for the main thread it opens a file. So each outermost level asks
// until it succeeds.
//
// A frame outside the thread's stack is on a stack that the program made itself, and nothing tells
// where that one ends.
bool NestingStack::CarriesAnotherLevel() noexcept {
  if (fHigh == 0 && fLevels == 1) Ask();
  const std::uintptr_t here = Here();
  return fLow <= here && here < fHigh ? here >= fLimit : fLevels <= kUnknownStackLevels;
}

unsigned long NestingStack::HowManyFit(unsigned long bytesPerLevel) const noexcept {
  const std::uintptr_t left = Here() - fLimit;
  return left < fRoom ? left / std::max(bytesPerLevel, 1ul) : 0;
}

void NestingGuard::ThrowTooDeep() {
  throw KAP_T_MT::POSException("property object is nested too deep");
}

}  // namespace NPOSObjectImpl
