#pragma once

#include <exception>
#include <utility>

namespace PosUtil {

// What one of our streams raised in a call of the library, which makes no more than a text of it.
class SavedException {
 public:
  // Calls, and keeps what that raises before it passes.
  template <class Call>
  auto Keep(Call call) {
    try {
      return call();
    } catch (...) {
      fException = std::current_exception();
      throw;
    }
  }
  void Rethrow() {
    if (fException) std::rethrow_exception(std::exchange(fException, nullptr));
  }

 private:
  std::exception_ptr fException;
};

}  // namespace PosUtil
