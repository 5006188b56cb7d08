#pragma once

#include "SafeStringAPIs.h"
#include "kap/TOQException.h"
#include "posimpl/validator/MessageText.h"

namespace NPOSValidatorImpl {

// A definition without a category. Holds its text, which lives until the exception has been told.
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
