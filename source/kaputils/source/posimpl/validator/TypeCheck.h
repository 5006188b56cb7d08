// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/validator/Intrinsics.h"
#include "posimpl/validator/MessageText.h"
#include "posimpl/validator/TypeChecker.h"

namespace NPOSValidatorImpl {

// An object held against a type definition: what the checks of all categories are given. Borrowed.
struct TypeCheck {
  TypeChecker& fChecker;
  const Definition& fDefinition;
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
    return CheckIntrinsic(fDefinition.CategoryName(), fObject, fChecker.Words(), fErrors) ==
           IntrinsicCheck::kValid;
  }

  // The name of a type in a list of names; POSException for an element that is not a string.
  Kept<String> TypeAt(const Array& types, std::uint32_t index) const {
    return Kept<String>(ElementAt(types, index), fChecker.MustKeep());
  }

  // The errors of a part of the object, or of the object as another type. Their messages are put
  // in the context that `makeContext` makes. The part stays alive for the call; the name of the
  // type must.
  template <class MakeContext>
  ErrorCount CheckPart(const Subject& part, AtomText typeName, MakeContext makeContext) const {
    if (!fErrors.AreWanted() && !fChecker.MustKeep()) [[likely]] {
      return fChecker.GetObjectErrors(typeName, part, fErrors);
    }
    return CheckPartInContext(part, typeName, makeContext);
  }

  template <class MakeContext>
  [[gnu::noinline]] ErrorCount CheckPartInContext(const Subject& part, AtomText typeName,
                                                  MakeContext makeContext) const {
    const KAPContainerBaseGeneric kept =
        fChecker.MustKeep() ? part.Keep() : KAPContainerBaseGeneric();
    const ErrorList::Mark begin = fErrors.End();
    const ErrorCount count = fChecker.GetObjectErrors(typeName, part, fErrors);
    AppendErrorsInContext(fErrors, begin, makeContext);
    return count;
  }
};

}  // namespace NPOSValidatorImpl
