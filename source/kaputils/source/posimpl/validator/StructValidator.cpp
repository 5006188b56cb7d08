#include "posimpl/validator/StructValidator.h"

#include <memory>
#include <utility>

#include "kap/KAPSharedBuff.h"
#include "kapimpl/base/ContainedObject.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "kapimpl/base/Required.h"
#include "posimpl/base/NestingGuard.h"
#include "posimpl/validator/Category.h"
#include "posimpl/validator/MessageText.h"

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
  if (effect == Callback::kMayChange) fMustKeep = true;
  fExtraValidations.Insert(std::make_unique<ProcEntry>(typeName, callback, clientData));
}

// Most objects are valid, and a valid one can be full of unions whose first alternatives fail. So
// an object is checked without messages first, and only an invalid one again with messages. An
// extra validation must not run twice; with one registered, a single check does both.
bool StructValidator::Validate(const CPOSObject& object, AtomText typeName,
                               POSMessageProc message) const {
  const Subject subject(object.Handle());
  if (!message || fExtraValidations.empty()) {
    ErrorList unwanted(ErrorList::Wanted::kNo);
    if (GetObjectErrors(typeName, subject, unwanted) == 0) return true;
  }
  if (!message) return false;
  ErrorList errors(ErrorList::Wanted::kYes);
  if (GetObjectErrors(typeName, subject, errors) == 0) return true;
  for (std::uint32_t i = 0; i < errors.Count(); ++i) message(errors.TextAt(i));
  return false;
}

ErrorCount StructValidator::GetObjectErrors(AtomText typeName, const Subject& object,
                                            ErrorList& errors) const {
  const IntrinsicCheck intrinsic = CheckIntrinsic(typeName, object, fWords, errors);
  if (intrinsic == IntrinsicCheck::kValid) return 0;
  if (intrinsic == IntrinsicCheck::kInvalid) return 1;
  const ErrorCount count = GetTypeDefinitionComplianceErrors(typeName, object, errors);
  return count > 0 ? count : GetExtraValidationErrors(typeName, object, errors);
}

ErrorCount StructValidator::GetTypeDefinitionComplianceErrors(AtomText typeName,
                                                              const Subject& object,
                                                              ErrorList& errors) const {
  const NPOSObjectImpl::NestingGuard guard;
  const CPOSObject* member = fSchema.Find(typeName);
  const Dict* attributes = member ? Dict::GetInstanceNoThrow(member->Handle()) : nullptr;
  if (!attributes) {
    errors.Append([=] {
      return FormatIntoPOSString("Schema not applicable, no definition for %s", typeName);
    });
    return 1;
  }
  const CPOSObject* word = attributes->Find(fWords.Category);
  const String* category = word ? String::GetInstanceNoThrow(word->Handle()) : nullptr;
  if (!category) throw MalformedDefinition(typeName);
  const CPOSObject kept = fMustKeep ? *member : CPOSObject();
  const Definition definition(*attributes, fWords, fMustKeep);
  return Category::Get(category->Get(), fWords)
      .fCheck({*this, definition, category->Get(), object, errors});
}

// The callback may register another one in its own place, so the entry is not touched after the
// call, and the arguments stay alive until it returns.
ErrorCount StructValidator::GetExtraValidationErrors(AtomText typeName, const Subject& object,
                                                     ErrorList& errors) const {
  if (fExtraValidations.empty()) return 0;
  const ProcEntry* entry = fExtraValidations.Find(SortableText(typeName));
  if (!entry || !entry->Callback()) return 0;
  const CKAPStringAtom name = entry->GetKey().Atom();
  const KAPContainerBaseGeneric reference = object.Reference();
  const KAP_T_MT::TKAPSharedBuffer<char> reason(kMessageSize);
  if (entry->Callback()(reference.Handle(), name.Handle(), reason.Handle(), entry->ClientData())) {
    return 0;
  }
  errors.Append([&] {
    constexpr int kRoom = kMessageSize - 1;  // the callback may have left no terminator
    return FormatIntoPOSString("%.*s", kRoom, Required(reason.Data()));
  });
  return 1;
}

}  // namespace NPOSValidatorImpl
