// SPDX-License-Identifier: MIT
#pragma once

#include <exception>

// A member for objects whose destructor does work that may fail, such as writing the last bytes. It
// decides what happens to the exception:
//
//   - Usually it leaves the destructor: the owner has no other way to learn of the failure.
//   - While another exception is in flight it is dropped, because a second one would end the
//     process. The first exception is the one that counts.
//
// Construct it with the object: it counts the exceptions in flight then and compares at the end.
class Finishing {
 public:
  // Call it in the destructor.
  template <class Work>
  void Run(Work work) const {
    try {
      work();
    } catch (...) {
      if (std::uncaught_exceptions() <= fInFlightBefore) throw;
    }
  }

 private:
  const int fInFlightBefore = std::uncaught_exceptions();
};
