// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "base/ValuePath.h"

namespace PosUtil {

// A format cannot hold the value at a path of a document.
class ValueFailure : public Failure {
 public:
  // `document` is the name of the document.
  ValueFailure(const std::string& document, ValuePath path, const std::string& reason);

  const ValuePath& Path() const { return fPath; }
  // The path to the value and the reason.
  const std::string& Explanation() const { return fExplanation; }
  // The same failure about a document in which the value that was written is at `place`.
  ValueFailure Within(const ValuePath& place) const;

 private:
  std::string fDocument;
  ValuePath fPath;
  std::string fReason;
  std::string fExplanation;
};

// The same where the document and the path are not known. Code that knows them turns it into a
// ValueFailure.
class ValueError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace PosUtil
