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

struct NestingLevel::ThreadStack {
  std::uintptr_t fLow;  // 0 when unknown
  std::uintptr_t fHigh;
  std::uintptr_t fLimit;  // no level begins below
  unsigned int fLevels;

  void Ask() noexcept;
  bool Contains(std::uintptr_t address) const noexcept {
    return fLow <= address && address < fHigh;
  }
  bool CarriesAnotherLevel() noexcept;
};

// Not inline: see build/kaputils/CMakeLists.txt on thread-local variables.
[[gnu::noinline]] NestingLevel::ThreadStack& NestingLevel::OnThisThread() noexcept {
  static thread_local constinit ThreadStack tStack = {};
  return tStack;
}

namespace {

std::uintptr_t Here() noexcept {
  return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

}  // namespace

void NestingLevel::ThreadStack::Ask() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void* low = nullptr;
  std::size_t size = 0;
  if (pthread_attr_getstack(&attributes, &low, &size) == 0) {
    fLow = reinterpret_cast<std::uintptr_t>(low);
    fHigh = fLow + size;
    fLimit = fLow + std::clamp(size / kReservedPart, kSmallestReserve, kLargestReserve);
  }
  pthread_attr_destroy(&attributes);
}

// Asking can fail for a while: for the main thread it opens a file. So each outermost level asks
// until it succeeds.
//
// A frame outside the thread's stack is on a stack that the program made itself, and nothing tells
// where that one ends.
bool NestingLevel::ThreadStack::CarriesAnotherLevel() noexcept {
  if (fHigh == 0 && fLevels == 1) Ask();
  const std::uintptr_t here = Here();
  return Contains(here) ? here >= fLimit : fLevels <= kUnknownStackLevels;
}

// The level counts also when it does not fit: its destructor runs in any case.
NestingLevel::NestingLevel() noexcept : fStack(OnThisThread()) {
  ++fStack.fLevels;
  fFits = fStack.CarriesAnotherLevel();
}

NestingLevel::~NestingLevel() { --fStack.fLevels; }

unsigned long NestingLevel::HowManyFit(unsigned long bytesPerLevel) noexcept {
  const ThreadStack& stack = OnThisThread();
  const std::uintptr_t here = Here();
  if (!stack.Contains(here) || here < stack.fLimit) return 0;
  return (here - stack.fLimit) / std::max(bytesPerLevel, 1ul);
}

void NestingGuard::ThrowTooDeep() {
  throw KAP_T_MT::POSException("property object is nested too deep");
}

}  // namespace NPOSObjectImpl
