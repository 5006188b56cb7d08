// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>

namespace PosUtil {

enum ExitStatus : int {
  kExitSuccess = 0,
  kExitNegative = 1,  // a negative result: a path has no value, a document is not valid
  kExitUsage = 2,
  kExitFailure = 3,  // unreadable or malformed input, lost output, a report of the library
};

// Ends a command. The text is the message to the user; an empty text prints nothing.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& text, ExitStatus status = kExitFailure)
      : std::runtime_error(text), fStatus(status) {}

  ExitStatus Status() const { return fStatus; }

 private:
  ExitStatus fStatus;
};

// A failure whose text starts with a place in the input.
class PlacedFailure : public Failure {
 public:
  using Failure::Failure;
};

// A document that was read, but has lost something: the next one can be read.
class LossFailure : public PlacedFailure {
 public:
  using PlacedFailure::PlacedFailure;
};

// The reader of the output has left: the program ends as if the signal of a closed pipe had killed
// it. Not a Failure, deliberately: a command that goes on after a failure must not go on after
// this.
class ClosedPipe : public std::exception {
 public:
  const char* what() const noexcept override { return "closed pipe"; }
};

}  // namespace PosUtil
