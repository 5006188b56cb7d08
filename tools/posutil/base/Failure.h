#pragma once

#include <stdexcept>
#include <string>

namespace PosUtil {

enum ExitStatus : int {
  kExitSuccess = 0,
  kExitNegative = 1,  // the answer is no: there is nothing at a path, a document is not valid
  kExitUsage = 2,
  kExitFailure = 3,  // unreadable or malformed input, lost output, a report of the library
};

// What ends a command. The text, when there is any, is meant for the user as it is.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& text, ExitStatus status = kExitFailure)
      : std::runtime_error(text), fStatus(status) {}

  ExitStatus Status() const { return fStatus; }

 private:
  ExitStatus fStatus;
};

// A value that a format cannot hold, at a place in the document.
class ValueError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;

  // The failure to tell of: the document's name, the path to the value, the reason.
  Failure At(const std::string& document, const std::string& path) const;
};

}  // namespace PosUtil
