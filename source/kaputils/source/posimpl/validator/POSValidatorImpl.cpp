// The procedures of "POSValidatorInterface" and "POSStructValidatorInterface".

#include "posimpl/validator/POSValidatorImpl.h"

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "posimpl/validator/SchemaCheck.h"
#include "posimpl/validator/StructValidator.h"

namespace NPOSValidatorImpl {

using KAP_T_MT::CKAPContainerHolder;
using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::KAPReportingError;
using KAP_T_MT::POSStructValidatorInterface;
using KAP_T_MT::POSValidatorInterface;
using NPOSObjectImpl::TextOf;

namespace {

bool POSValidatorValidateProc(POSValidator* validator, POSObject* object, KAPStringAtom* typeName,
                              POSMessageProc message) noexcept {
  return KAPReportingError([=] {
    const StructValidator& instance = StructValidator::GetInstance(validator);
    const CKAPContainerHolder kept(instance.Keeps() ? validator : nullptr, false);
    return instance.Validate(BaseObject::Reference(object), TextOf(typeName), message);
  });
}

POSValidator* POSStructValidatorNewStructValidatorProc(POSDict* schema) noexcept {
  return KAPReportingError(
      [=] { return StructValidator::NewContainer(BaseObject::Reference(schema)); });
}

void POSStructValidatorRegisterCallbackProc(POSValidator* validator, KAPStringAtom* typeName,
                                            KAP_T_MT::POSExtraValidationProc callback,
                                            void* clientData) noexcept {
  KAPReportingError([=] {
    StructValidator::GetInstance(validator).RegisterExtraValidation(
        CKAPStringAtom(Required(typeName), false), callback, clientData,
        StructValidator::Callback::kMayChange);
  });
}

// Deliberately without a handler: the caller may catch what the check throws.
bool POSStructValidatorValidateSchemaProc(POSDict* schema, POSMessageProc message) {
  return ValidateSchema(BaseObject::Reference(schema), message);
}

}  // namespace

bool RegisterPOSValidatorImpl() {
  return KAP_T_MT::KAPRegisterInterface<POSValidatorInterface>(&POSValidatorValidateProc) &&
         KAP_T_MT::KAPRegisterInterface<POSStructValidatorInterface>(
             &POSStructValidatorNewStructValidatorProc, &POSStructValidatorRegisterCallbackProc,
             &POSStructValidatorValidateSchemaProc);
}

void UnregisterPOSValidatorImpl() {
  KAP_T_MT::KAPUnregisterInterface(POSValidatorInterface::kName);
  KAP_T_MT::KAPUnregisterInterface(POSStructValidatorInterface::kName);
}

}  // namespace NPOSValidatorImpl
