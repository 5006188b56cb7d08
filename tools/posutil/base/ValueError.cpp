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
      fDocument(document),
      fPath(std::move(path)),
      fReason(reason),
      fExplanation(Explain(fPath, reason)) {}

ValueFailure ValueFailure::Within(const ValuePath& place) const {
  ValuePath path = place;
  path.insert(path.end(), fPath.begin(), fPath.end());
  return {fDocument, std::move(path), fReason};
}

}  // namespace PosUtil
