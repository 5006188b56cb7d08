#pragma once

#include <cstddef>

#include "posimpl/validator/TypeCheck.h"

namespace NPOSValidatorImpl {

// What is said about a length below "minlen" or above "maxlen"; the bound is at hand as "%d".
struct LengthMessages {
  const char* fBelow;
  const char* fAbove;
};

ErrorCount CheckLength(const TypeCheck& check, std::size_t length, const LengthMessages& messages);

}  // namespace NPOSValidatorImpl
