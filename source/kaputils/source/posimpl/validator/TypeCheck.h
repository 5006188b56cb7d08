#pragma once

#include "Definition.h"
#include "ErrorList.h"
#include "MessageText.h"
#include "StructValidator.h"
#include "Subject.h"

namespace NPOSValidatorImpl {

// An object held against a type definition: what the checks of all categories are given. Borrowed.
struct TypeCheck {
  const StructValidator& fValidator;
  const Definition& fDefinition;
  AtomText fCategory;
  const Subject& fObject;
  ErrorList& fErrors;

  // One error, with this message: a literal, or what makes it.
  template <class Message>
  ErrorCount Fail(Message message) const {
    fErrors.Append(message);
    return 1;
  }

  // Whether the object is of the intrinsic type that is named like the category.
  bool IsIntrinsic() const {
    return fValidator.CheckIntrinsic(fCategory, fObject, fErrors) ==
           StructValidator::IntrinsicCheck::kValid;
  }

  // The errors of a part of the object, or of the object as another type. Their messages are put
  // in the context that `makeContext` makes.
  template <class MakeContext>
  ErrorCount CheckPart(const Subject& part, AtomText typeName, MakeContext makeContext) const {
    ErrorList errors = ErrorList::ForPartOf(fErrors);
    const ErrorCount count = fValidator.GetObjectErrors(typeName, part, errors);
    if (!errors.IsEmpty()) {
      AppendErrorsInContext(fErrors, errors, TextOfPOSString(makeContext()));
    }
    return count;
  }
};

}  // namespace NPOSValidatorImpl
