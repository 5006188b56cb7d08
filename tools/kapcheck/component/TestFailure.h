// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace KAPCheck {

// What is wrong with the component, in one sentence. Ends the test.
class TestFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Calls code of a component. An exception that leaves it is a failure of the test.
template <class Body>
auto Guarded(const std::string& what, Body body) {
  try {
    return body();
  } catch (const std::exception& error) {
    throw TestFailure("an exception leaves " + what + ": " + error.what());
  } catch (...) {
    throw TestFailure("an exception leaves " + what);
  }
}

}  // namespace KAPCheck
