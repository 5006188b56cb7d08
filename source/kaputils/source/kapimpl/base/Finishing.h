#pragma once

#include <exception>

// A member of an object whose last work, done by the destructor, may fail. The one answer to what
// happens then:
//
//   - Usually the failure is thrown: it is the only way to tell the owner.
//   - While another exception is in flight nothing is thrown, since that would end the process. The
//     first exception is the one that counts; `atSecond` is called for the other.
class Finishing {
 public:
  // Called by the destructor. `atSecond` runs in the handler of the second exception and must not
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
  // The same; a second exception is dropped.
  template <class Work>
  void Run(Work work) const {
    Run(work, [] {});
  }

 private:
  const int fInFlightBefore = std::uncaught_exceptions();
};
