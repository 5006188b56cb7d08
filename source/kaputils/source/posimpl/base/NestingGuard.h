// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace NPOSObjectImpl {

// The stack of a thread and the levels of recursions that are on it. All recursions of a thread
// count together, since they share its stack.
//
// Finding it takes a call (see build/kaputils/CMakeLists.txt on thread-local variables), which cost
// a tenth of the time of "IsEqual" when each array and dictionary made it. So a recursion finds it
// once and hands it down.
class NestingStack {
 public:
  static NestingStack& OnThisThread() noexcept;

  // Enters a level, also when it does not fit. Whether the remaining stack suffices for it. Where
  // the ends of the stack cannot be known, a modest number of levels is the limit.
  bool Enter() noexcept {
    ++fLevels;
    return Here() - fLimit < fRoom || CarriesAnotherLevel();
  }
  void Leave() noexcept { --fLevels; }

  // How many further levels fit if each takes so many bytes of stack; 0 where the ends of the stack
  // cannot be known. For a thread that has entered a level.
  unsigned long HowManyFit(unsigned long bytesPerLevel) const noexcept;

  // Where the stack of the caller is.
  [[gnu::always_inline]] static std::uintptr_t Here() noexcept {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  }

 private:
  [[gnu::noinline]] bool CarriesAnotherLevel() noexcept;
  void Ask() noexcept;

  std::uintptr_t fLow = 0;  // 0 when unknown
  std::uintptr_t fHigh = 0;
  std::uintptr_t fLimit = 0;  // no level begins below
  std::uintptr_t fRoom = 0;   // from there to the high end
  unsigned int fLevels = 0;
};

// One level of a recursion over nested objects, on this thread.
class NestingLevel {
 public:
  explicit NestingLevel(NestingStack& stack = NestingStack::OnThisThread()) noexcept
      : fStack(stack), fFits(stack.Enter()) {}
  ~NestingLevel() { fStack.Leave(); }
  NestingLevel(const NestingLevel&) = delete;
  NestingLevel& operator=(const NestingLevel&) = delete;

  // Whether the remaining stack suffices for the level.
  bool Fits() const noexcept { return fFits; }

 private:
  NestingStack& fStack;
  const bool fFits;
};

// The same. POSException "property object is nested too deep" when the level does not fit.
class NestingGuard {
 public:
  explicit NestingGuard(NestingStack& stack = NestingStack::OnThisThread()) : fLevel(stack) {
    if (!fLevel.Fits()) [[unlikely]]
      ThrowTooDeep();
  }

  [[noreturn]] static void ThrowTooDeep();

 private:
  const NestingLevel fLevel;
};

}  // namespace NPOSObjectImpl
