#pragma once

#include <exception>

// A member for objects whose destructor does work that may fail, such as writing the last bytes. It
// decides what happens to the exception:
//
//   - Usually it leaves the destructor: the owner has no other way to learn of the failure.
//   - While another exception is in flight it does not, because that would end the process. The
//     first exception is the one that counts; `atSecond` is called for the second one.
//
// Construct it with the object: it counts the exceptions in flight then and compares at the end.
class Finishing {
 public:
  // Call it in the destructor. `atSecond` runs in the handler of the second exception and must not
  // throw.
  template <class Work, class AtSecond>
  void Run(Work work, AtSecond atSecond) const {
    try {
      work();
    } catch (...) {
      if (std::uncaught_exceptions() <= fInFlightBefore) throw;
      atSecond();
    }
  }
  // The same, but drops a second exception.
  template <class Work>
  void Run(Work work) const {
    Run(work, [] {});
  }

 private:
  const int fInFlightBefore = std::uncaught_exceptions();
};
