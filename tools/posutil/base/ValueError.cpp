// SPDX-License-Identifier: MIT
#include "base/ValueError.h"

#include "base/Printable.h"

namespace PosUtil {

namespace {

std::string Explain(const ValuePath& path, const std::string& reason) {
  return (path.empty() ? "the document" : Printable(PathText(path))) + ": " + reason;
}

}  // namespace

ValueFailure::ValueFailure(const std::string& document, ValuePath path, const std::string& reason)
    : Failure(Printable(document) + ": " + Explain(path, reason)),
      fPath(std::move(path)),
      fExplanation(Explain(fPath, reason)) {}

}  // namespace PosUtil
