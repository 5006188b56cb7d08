#pragma once

#include <exception>

// For objects on the stack whose last work, done by the destructor, may fail.
class Finishing {
 public:
  // Called by the destructor. What `work` raises passes on, unless an exception is passing already:
  // then that one is reported, and the second never ends the process.
  template <class Work>
  void Run(Work work) const {
    try {
      work();
    } catch (...) {
      if (std::uncaught_exceptions() <= fPassingBefore) throw;
    }
  }

 private:
  const int fPassingBefore = std::uncaught_exceptions();
};
