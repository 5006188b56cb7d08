#pragma once

#include "posimpl/validator/Definition.h"
#include "posimpl/validator/ErrorList.h"
#include "posimpl/validator/Intrinsics.h"
#include "posimpl/validator/MessageText.h"
#include "posimpl/validator/Subject.h"

namespace NPOSValidatorImpl {

// What a check asks for the parts of its object: the errors of an object held against a named type,
// which are appended.
class TypeChecker {
 public:
  virtual ErrorCount GetObjectErrors(AtomText typeName, const Subject& object,
                                     ErrorList& errors) const = 0;

 protected:
  ~TypeChecker() = default;
};

// An object held against a type definition: what the checks of all categories are given. Borrowed.
struct TypeCheck {
  const TypeChecker& fChecker;
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
    return CheckIntrinsic(fCategory, fObject, fDefinition.Words(), fErrors) ==
           IntrinsicCheck::kValid;
  }

  // The name of a type in a list of names; POSException for an element that is not a string.
  Kept<String> TypeAt(const Array& types, std::uint32_t index) const {
    return Kept<String>(ElementAt(types, index), fDefinition.MustKeep());
  }

  // The errors of a part of the object, or of the object as another type. Their messages are put
  // in the context that `makeContext` makes. The part stays alive for the call; the name of the
  // type must.
  template <class MakeContext>
  ErrorCount CheckPart(const Subject& part, AtomText typeName, MakeContext makeContext) const {
    const KAPContainerBaseGeneric kept =
        fDefinition.MustKeep() ? part.Keep() : KAPContainerBaseGeneric();
    ErrorList errors = ErrorList::ForPartOf(fErrors);
    const ErrorCount count = fChecker.GetObjectErrors(typeName, part, errors);
    if (!errors.IsEmpty()) {
      AppendErrorsInContext(fErrors, errors, TextOfPOSString(makeContext()));
    }
    return count;
  }
};

}  // namespace NPOSValidatorImpl
