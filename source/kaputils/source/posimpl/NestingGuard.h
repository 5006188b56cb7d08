#pragma once

namespace NPOSObjectImpl {

// One level of a recursion over nested objects, on this thread. Raises POSException "property
// object is nested too deep" when the stack that is left would not carry another level; where the
// ends of the stack cannot be known, a modest number of levels is the limit. Also counts levels
// that other recursions on the same thread have entered.
class NestingGuard {
 public:
  NestingGuard() : fLevels(Enter()) {}
  ~NestingGuard() { --fLevels; }
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;

 private:
  static unsigned int& Enter();

  unsigned int& fLevels;  // this thread's
};

}  // namespace NPOSObjectImpl
