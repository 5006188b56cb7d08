// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/validator/TypeCheck.h"

namespace NPOSValidatorImpl {

// What the "category" of a definition selects. All checks of a category run; one error does not end
// them, except where a check says so.
struct Category {
  KeywordName fName;
  ErrorCount (*fCheck)(const TypeCheck& check);
  KAP_T_MT::POSType fType;  // what the objects of the category are; none when any may be

  // TOQException for any other name.
  static const Category& Get(AtomText name, const Keywords& words);
};

}  // namespace NPOSValidatorImpl
