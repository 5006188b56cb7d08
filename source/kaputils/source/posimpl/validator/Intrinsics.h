// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/validator/ErrorList.h"
#include "posimpl/validator/Keywords.h"
#include "posimpl/validator/Subject.h"

namespace NPOSValidatorImpl {

// The types that need no definition.
struct Intrinsic {
  KeywordName fName;
  // Why the object is not of the type; null if it is.
  const char* (*fFault)(const Subject& object, const Keywords& words);
  KAP_T_MT::POSType fType;  // the kind of the objects; none when there are several kinds

  // The type of this name; null when it needs a definition.
  static const Intrinsic* Find(AtomText name, const Keywords& words) noexcept;
};

enum class IntrinsicCheck { kNotIntrinsic, kValid, kInvalid };

// Whether the object is of the intrinsic type of this name. Appends the fault when it is not.
IntrinsicCheck CheckIntrinsic(AtomText typeName, const Subject& object, const Keywords& words,
                              ErrorList& errors);

}  // namespace NPOSValidatorImpl
