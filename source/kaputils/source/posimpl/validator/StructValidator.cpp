// SPDX-License-Identifier: MIT
#include "posimpl/validator/StructValidator.h"

#include <memory>
#include <utility>

#include "kapimpl/base/ContainedObject.h"
#include "kapimpl/base/KAPUtilsAtoms.h"

namespace NPOSValidatorImpl {

using KAP_T_MT::CKAPStringAtom;

namespace {

void DeletePOSValidatorImpl(void* instance) noexcept {
  KAP_T_MT::KAPDeleteVirtualClientBase(instance);
}

}  // namespace

StructValidator::StructValidator(CPOSObject schema)
    : fSchemaReference(std::move(schema)), fSchema(Dict::GetInstance(fSchemaReference.Handle())) {}

POSValidator* StructValidator::NewContainer(CPOSObject schema) {
  const KAPUtilsAtoms& atoms = KAPUtilsAtoms::Get();
  return KAPContain(KAPInstanceOwner(KAP_T_MT::KAPNewClient<StructValidator>(std::move(schema))),
                    atoms.POSValidatorImpl, atoms.POSValidatorInterface, &DeletePOSValidatorImpl);
}

StructValidator& StructValidator::GetInstance(POSValidator* handle) {
  return KAPInstanceOf<StructValidator>(handle, KAPUtilsAtoms::Get().POSValidatorImpl);
}

void StructValidator::RegisterExtraValidation(const CKAPStringAtom& typeName,
                                              KAP_T_MT::POSExtraValidationProc callback,
                                              void* clientData, Callback effect) {
  // An entry without a callback would cost every check what one with a callback does.
  if (!callback) {
    fExtraValidations.Remove(SortableText(typeName.Text()));
    return;
  }
  if (effect == Callback::kMayChange) fMayChange = true;
  fExtraValidations.Insert(std::make_unique<ProcEntry>(typeName, callback, clientData));
}

// Most objects are valid, and a valid one can be full of unions whose first alternatives fail. So
// an object is checked without messages first, and only an invalid one again with messages. An
// extra validation must not run twice; with one registered, a single check does both.
bool StructValidator::Validate(const CPOSObject& object, AtomText typeName,
                               POSMessageProc message) const {
  const Subject subject(object.Handle());
  TypeChecker checker(fSchema, fWords, fExtraValidations, MustKeep());
  if (!message || fExtraValidations.empty()) {
    ErrorList unwanted(ErrorList::Wanted::kNo);
    if (checker.GetObjectErrors(typeName, subject, unwanted) == 0) return true;
  }
  if (!message) return false;
  ErrorList errors(ErrorList::Wanted::kYes);
  if (checker.GetObjectErrors(typeName, subject, errors) == 0) return true;
  errors.Report(message);
  return false;
}

}  // namespace NPOSValidatorImpl
