#pragma once

namespace NPOSObjectImpl {

// One level of a recursion over nested objects, on this thread. All recursions of a thread count
// together, since they share its stack.
class NestingLevel {
 public:
  NestingLevel() noexcept;
  ~NestingLevel();
  NestingLevel(const NestingLevel&) = delete;
  NestingLevel& operator=(const NestingLevel&) = delete;

  // Whether the remaining stack suffices for the level. Where the ends of the stack cannot be
  // known, a modest number of levels is the limit.
  bool Fits() const noexcept { return fFits; }

  // How many further levels fit if each takes so many bytes of stack; 0 where the ends of the stack
  // cannot be known. For a thread that has entered a level.
  static unsigned long HowManyFit(unsigned long bytesPerLevel) noexcept;

 private:
  struct ThreadStack;
  static ThreadStack& OnThisThread() noexcept;

  ThreadStack& fStack;
  bool fFits;
};

// The same. POSException "property object is nested too deep" when the level does not fit.
class NestingGuard {
 public:
  NestingGuard() {
    if (!fLevel.Fits()) [[unlikely]]
      ThrowTooDeep();
  }

  [[noreturn]] static void ThrowTooDeep();

 private:
  const NestingLevel fLevel;
};

}  // namespace NPOSObjectImpl
