// SPDX-License-Identifier: MIT

// The procedures of "POSValidatorInterface" and "POSStructValidatorInterface".

#include "posimpl/validator/POSValidatorImpl.h"

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "pos/POSInterfaceSets.h"
#include "posimpl/procs/RegisteredSet.h"
#include "posimpl/validator/SchemaCheck.h"
#include "posimpl/validator/StructValidator.h"

namespace NPOSValidatorImpl {

using KAP_T_MT::CKAPContainerHolder;
using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::KAPReportingError;
using NPOSObjectImpl::TextOf;

namespace {

bool POSValidatorValidateProc(POSValidator* validator, POSObject* object, KAPStringAtom* typeName,
                              POSMessageProc message) noexcept {
  return KAPReportingError([=] {
    const StructValidator& instance = StructValidator::GetInstance(validator);
    const CKAPContainerHolder kept(instance.MustKeep() ? validator : nullptr);
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
        CKAPStringAtom(Required(typeName)), callback, clientData,
        StructValidator::Callback::kMayChange);
  });
}

// Deliberately without a handler: the caller may catch what the check throws.
bool POSStructValidatorValidateSchemaProc(POSDict* schema, POSMessageProc message) {
  return ValidateSchema(BaseObject::Reference(schema), message);
}

}  // namespace
}  // namespace NPOSValidatorImpl

template <>
bool NPOSObjectImpl::RegisterProcs<KAP_T_MT::POSValidatorInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSValidatorInterface>(
      &NPOSValidatorImpl::POSValidatorValidateProc);
}

template <>
bool NPOSObjectImpl::RegisterProcs<KAP_T_MT::POSStructValidatorInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSStructValidatorInterface>(
      &NPOSValidatorImpl::POSStructValidatorNewStructValidatorProc,
      &NPOSValidatorImpl::POSStructValidatorRegisterCallbackProc,
      &NPOSValidatorImpl::POSStructValidatorValidateSchemaProc);
}

namespace NPOSValidatorImpl {

bool RegisterPOSValidatorImpl() {
  return NPOSObjectImpl::RegisterSet<KAP_T_MT::POSValidatorInterfaceSet>();
}

void UnregisterPOSValidatorImpl() {
  NPOSObjectImpl::UnregisterSet<KAP_T_MT::POSValidatorInterfaceSet>();
}

}  // namespace NPOSValidatorImpl
