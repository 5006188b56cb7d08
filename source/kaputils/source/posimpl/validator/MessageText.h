// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "SafeStringAPIs.h"
#include "kap/TOQException.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// Room for a message and its terminator. A longer message is cut to fit.
inline constexpr std::size_t kMessageSize = 1024;

// A property string of the formatted text. Numbers are written as in the C locale. Throws the
// host's errors.
[[gnu::format(printf, 1, 2)]] CPOSObject FormatIntoPOSString(const char* format, ...);

// The text of a property string, which lives as long as that.
const char* TextOfPOSString(const POSObject* string);

// A definition without a category. Holds its own text, because that names the type.
class MalformedDefinition : public KAP_T_MT::TOQException {
 public:
  explicit MalformedDefinition(const char* typeName) noexcept : TOQException(nullptr) {
    KAP_T_MT::sprintf_safe(fText, sizeof fText, "Malformed schema definition for %s, no category",
                           typeName);
  }
  const char* what() const noexcept override { return fText; }

 private:
  char fText[kMessageSize];
};

}  // namespace NPOSValidatorImpl
