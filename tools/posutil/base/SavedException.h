// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <utility>

namespace PosUtil {

// An exception that one of our callbacks throws into a call of the library. The library keeps
// only its text; this saves the exception itself, for the caller on the other side.
class SavedException {
 public:
  // Runs the call; saves the exception it throws, then rethrows it.
  template <class Call>
  auto Save(Call call) {
    try {
      return call();
    } catch (...) {
      fException = std::current_exception();
      throw;
    }
  }
  // Throws the saved exception, if there is one, and forgets it.
  void Rethrow() {
    if (fException) std::rethrow_exception(std::exchange(fException, nullptr));
  }

 private:
  std::exception_ptr fException;
};

}  // namespace PosUtil
