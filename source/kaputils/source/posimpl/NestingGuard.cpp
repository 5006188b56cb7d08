#include "NestingGuard.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pos/POSException.h"

namespace NPOSObjectImpl {

namespace {

// What a level may use before the next check, procedures of the host and of other components
// included: the more, the larger the stack is.
constexpr std::size_t kLargestReserve = 256 * 1024;
constexpr std::size_t kSmallestReserve = 12 * 1024;  // throwing takes half of it
constexpr std::size_t kReservedPart = 4;             // one part in so many, in between

constexpr unsigned int kUnknownStackLevels = 64;

struct ThreadStack {
  bool fAsked;
  std::uintptr_t fLow;  // 0 when unknown
  std::uintptr_t fHigh;
  std::uintptr_t fLimit;  // no level begins below
  unsigned int fLevels;
};

thread_local constinit ThreadStack gStack = {};

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

// A frame outside the thread's stack stands on one that the program made itself, whose ends nobody
// tells.
bool CarriesAnotherLevel(ThreadStack& stack) noexcept {
  if (!stack.fAsked) AskForStack(stack);
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  if (stack.fLow <= here && here < stack.fHigh) return here >= stack.fLimit;
  return stack.fLevels <= kUnknownStackLevels;
}

}  // namespace

// Not inline: see build/kaputils/CMakeLists.txt on thread-local variables.
[[gnu::noinline]] unsigned int& NestingGuard::Enter() {
  ThreadStack& stack = gStack;
  ++stack.fLevels;
  if (CarriesAnotherLevel(stack)) return stack.fLevels;
  --stack.fLevels;
  throw KAP_T_MT::POSException("property object is nested too deep");
}

}  // namespace NPOSObjectImpl
