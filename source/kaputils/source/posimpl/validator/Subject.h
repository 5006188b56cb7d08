// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

using KAP_T_MT::KAPContainerBaseGeneric;

// What is checked: a property object, or the name of a dictionary's member, which counts as an
// 8-bit string and becomes an object only where one is needed. Borrowed.
class Subject {
 public:
  // An object of another component has none of the kinds that a schema knows.
  explicit Subject(POSObject* handle) noexcept
      : fHandle(handle),
        fObject(BaseObject::GetInstanceNoThrow(handle)),
        fType(fObject ? fObject->GetType() : 0),
        fText(fType == KAP_T_MT::kPOSString ? static_cast<const String*>(fObject)->Get()
                                            : nullptr) {}
  explicit Subject(const KAP_T_MT::CKAPStringAtom& memberName) noexcept
      : fHandle(nullptr), fObject(nullptr), fType(KAP_T_MT::kPOSString), fText(memberName.Text()) {}

  POSObject* Handle() const noexcept { return fHandle; }  // null for a member's name

  // The object as one of this kind, null when it is of another. For strings: Text.
  template <class Kind>
  const Kind* As() const noexcept {
    static_assert(Kind::kType != KAP_T_MT::kPOSString, "a member's name is not an object");
    return fType == Kind::kType ? static_cast<const Kind*>(fObject) : nullptr;
  }
  AtomText Text() const noexcept { return fText; }  // null when it is not an 8-bit string

  // A new reference to the object, or an empty one for a member's name. Plain references: an object
  // of another component can be kept even after its interface is gone.
  KAPContainerBaseGeneric Keep() const {
    return fHandle ? KAPContainerBaseGeneric(fHandle) : KAPContainerBaseGeneric();
  }

  // A new reference to the object, which is made for a member's name.
  KAPContainerBaseGeneric Reference() const {
    if (fHandle) return KAPContainerBaseGeneric(fHandle);
    return KAPContainerBaseGeneric(String::NewContainer(fText), KAP_T_MT::KAPAdopt());
  }

 private:
  POSObject* fHandle;         // null for a member's name
  const BaseObject* fObject;  // null for a member's name and for objects of other components
  int fType;                  // a POSType, 0 for none
  AtomText fText;
};

}  // namespace NPOSValidatorImpl
