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

struct ThreadStack {
  bool fAsked;
  std::uintptr_t fLow;  // 0 when unknown
  std::uintptr_t fHigh;
  std::uintptr_t fLimit;  // no level begins below
  unsigned int fLevels;
};

// In the memory that a thread begins with: the ordinary model allocates at a thread's first use, and
// a release must need no memory.
[[gnu::tls_model("initial-exec")]] thread_local constinit ThreadStack gStack = {};

void AskForStack(ThreadStack& stack) noexcept {
  stack.fAsked = true;
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void* low = nullptr;
  std::size_t size = 0;
  if (pthread_attr_getstack(&attributes, &low, &size) == 0) {
    stack.fLow = reinterpret_cast<std::uintptr_t>(low);
    stack.fHigh = stack.fLow + size;
    stack.fLimit = stack.fLow + std::clamp(size / kReservedPart, kSmallestReserve, kLargestReserve);
  }
  pthread_attr_destroy(&attributes);
}

std::uintptr_t Here() noexcept {
  return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

bool IsKnown(const ThreadStack& stack, std::uintptr_t here) noexcept {
  return stack.fLow <= here && here < stack.fHigh;
}

// A frame outside the thread's stack is on one that the program made itself, and nothing tells the
// ends of that.
bool CarriesAnotherLevel(ThreadStack& stack) noexcept {
  if (!stack.fAsked) AskForStack(stack);
  const std::uintptr_t here = Here();
  return IsKnown(stack, here) ? here >= stack.fLimit : stack.fLevels <= kUnknownStackLevels;
}

// The level counts also when it does not fit: its destructor runs in any case.
bool Enter() noexcept {
  ThreadStack& stack = gStack;
  ++stack.fLevels;
  return CarriesAnotherLevel(stack);
}

}  // namespace

NestingLevel::NestingLevel() noexcept : fFits(Enter()) {}

NestingLevel::~NestingLevel() { --gStack.fLevels; }

unsigned long NestingLevel::HowManyFit(unsigned long bytesPerLevel) noexcept {
  const std::uintptr_t here = Here();
  if (!IsKnown(gStack, here) || here < gStack.fLimit) return 0;
  return (here - gStack.fLimit) / std::max(bytesPerLevel, 1ul);
}

void NestingGuard::ThrowTooDeep() {
  throw KAP_T_MT::POSException("property object is nested too deep");
}

}  // namespace NPOSObjectImpl
