#pragma once

#include "posimpl/validator/Keywords.h"
#include "posimpl/validator/Subject.h"

namespace NPOSValidatorImpl {

// The types that need no definition.
struct Intrinsic {
  KeywordName fName;
  // Why the object is no instance of the type: null if it is one.
  const char* (*fFault)(const Subject& object, const Keywords& words);

  // The type of this name, null when there is none.
  static const Intrinsic* Find(AtomText name, const Keywords& words) noexcept;
};

}  // namespace NPOSValidatorImpl
