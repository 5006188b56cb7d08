// SPDX-License-Identifier: MIT
#include "POSValidator.h"

namespace KAP_T_MT {

namespace {

using Client = TKAPInterfaceClient<POSStructValidatorInterface>;

}  // namespace

constinit CPOSValidatorTerminate CPOSValidator::fTerm;

bool CPOSValidator::Validate(const CPOSObject& object, const CKAPStringAtom& typeName,
                             POSMessageProc message) const {
  return fTerm.Method<"Validate">(Handle())(Handle(), object.Handle(), typeName.Handle(), message);
}

CPOSStructValidator::CPOSStructValidator(const CPOSDict& schema)
    : CPOSValidator(Client::Call<"NewPOSStructValidator">(schema.Handle()), KAPAdopt()) {}

void CPOSStructValidator::RegisterCallbackProc(const CKAPStringAtom& typeName,
                                               POSExtraValidationProc callback, void* clientData) {
  Client::Call<"RegisterCallbackProc">(Handle(), typeName.Handle(), callback, clientData);
}

bool CPOSStructValidator::ValidateSchema(const CPOSDict& schema, POSMessageProc message) {
  return Client::Call<"ValidateSchema">(schema.Handle(), message);
}

}  // namespace KAP_T_MT
