#pragma once

#include "kap/KAPClientBase.h"
#include "pos/POSValidatorInterfaces.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

using KAP_T_MT::POSMessageProc;

// What stands behind the handle of a validator.
class BaseValidator : public KAP_T_MT::CKAPVirtualClientBase {
 public:
  // Whether the object complies with the type. If not, `message`, unless null, is called for each
  // reason. What keeps the check from being made is raised, and then no message is given.
  virtual bool Validate(const CPOSObject& object, AtomText typeName,
                        POSMessageProc message) const = 0;
};

}  // namespace NPOSValidatorImpl
