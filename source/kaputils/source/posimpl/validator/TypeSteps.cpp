// SPDX-License-Identifier: MIT

// The step from the name of a type to its check. It stands apart from TypeChecker.h, on which the
// checks rest.

#include <memory>

#include "kap/KAPSharedBuff.h"
#include "kapimpl/base/Required.h"
#include "posimpl/validator/Category.h"
#include "posimpl/validator/MessageText.h"
#include "posimpl/validator/TypeChecker.h"

namespace NPOSValidatorImpl {

using KAP_T_MT::CKAPStringAtom;
using NPOSObjectImpl::NestingGuard;

const TypeChecker::Type* TypeChecker::FindType(AtomText typeName) const noexcept {
  const std::size_t first = FirstPlace(typeName);
  for (std::size_t i = 0; i < kNear; ++i) {
    const std::size_t place = (first + i) % kTypes;
    if (fTypeNames[place] == typeName) return &fTypes[place];
    if (!fTypeNames[place]) break;
  }
  return nullptr;
}

// kTypes when there is none.
std::size_t TypeChecker::FreePlaceFor(AtomText typeName) const noexcept {
  const std::size_t first = FirstPlace(typeName);
  for (std::size_t i = 0; i < kNear && !fMustKeep; ++i) {
    const std::size_t place = (first + i) % kTypes;
    if (!fTypeNames[place]) return place;
  }
  return kTypes;
}

ErrorCount TypeChecker::GetObjectErrors(AtomText typeName, const Subject& object,
                                        ErrorList& errors) {
  const Type* const type = FindType(typeName);
  return type ? GetErrorsOf(*type, typeName, object, errors)
              : GetErrorsOfNewType(typeName, object, errors);
}

ErrorCount TypeChecker::GetErrorsOfNewType(AtomText typeName, const Subject& object,
                                           ErrorList& errors) {
  // NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject): Find fills it
  Type notPlaced;
  CPOSObject kept;
  const std::size_t place = FreePlaceFor(typeName);
  Type& type = place < kTypes ? fTypes[place] : notPlaced;
  if (!Find(typeName, type, kept)) {
    errors.Append([=] {
      return FormatIntoPOSString("Schema not applicable, no definition for %s", typeName);
    });
    return 1;
  }
  if (place < kTypes) fTypeNames[place] = typeName;
  return GetErrorsOf(type, typeName, object, errors);
}

// False when the schema has no such definition. Throws when it has something else.
bool TypeChecker::Find(AtomText typeName, Type& type, CPOSObject& kept) const {
  type.fIntrinsic = Intrinsic::Find(typeName, fWords);
  if (type.fIntrinsic) return true;
  const NestingGuard guard(fStack);
  POSObject* const member = fSchema.Find(typeName);
  const Dict* attributes = member ? Dict::GetInstanceNoThrow(member) : nullptr;
  if (!attributes) return false;
  POSObject* const word = attributes->Find(fWords.Category);
  const String* category = word ? String::GetInstanceNoThrow(word) : nullptr;
  if (!category) throw MalformedDefinition(typeName);
  if (fMustKeep) kept = BaseObject::Share(member);
  std::construct_at(&type.fDefinition, *attributes, fWords, Category::Get(category->Get(), fWords),
                    category->Get(), fMustKeep);
  return true;
}

ErrorCount TypeChecker::GetErrorsOf(const Type& type, AtomText typeName, const Subject& object,
                                    ErrorList& errors) {
  if (type.fIntrinsic) {
    const char* const fault = type.fIntrinsic->fFault(object, fWords);
    if (!fault) return 0;
    errors.Append(fault);
    return 1;
  }
  const bool isLong = fDepth > kDepthUnremembered || fChecks > kChecksUnremembered;
  if (isLong && !fHasCallbacks) [[unlikely]] {
    return GetRememberedErrors(typeName, type.fDefinition, object, errors);
  }
  const ErrorCount count = GetTypeDefinitionComplianceErrors(type.fDefinition, object, errors);
  return count > 0 ? count : GetExtraValidationErrors(typeName, object, errors);
}

ErrorCount TypeChecker::GetTypeDefinitionComplianceErrors(const Definition& definition,
                                                          const Subject& object,
                                                          ErrorList& errors) {
  const NestingGuard guard(fStack);
  ++fDepth;
  ++fChecks;
  const ErrorCount count = definition.GetCategory().fCheck({*this, definition, object, errors});
  --fDepth;  // an exception ends the whole check
  return count;
}

// Whether there is a table now. Without memory, everything is checked again.
bool TypeChecker::BeginToRemember() noexcept {
  if (++fDeep != kDeepUnremembered) return false;
  try {
    fOutcomes.emplace();
    return true;
  } catch (...) {
    return false;
  }
}

ErrorCount TypeChecker::GetRememberedErrors(AtomText typeName, const Definition& definition,
                                            const Subject& object, ErrorList& errors) {
  const POSObject* const handle = object.Handle();
  if (!handle || !(fOutcomes || BeginToRemember()))
    return GetTypeDefinitionComplianceErrors(definition, object, errors);
  using Known = Outcomes::Known;
  const Known known = fOutcomes->Find(handle, typeName);
  if (known == Known::kValid) return 0;
  if (known == Known::kInvalid && !errors.AreWanted()) return 1;
  if (known == Known::kReported && errors.IsLong()) return 1;
  const ErrorCount count = GetTypeDefinitionComplianceErrors(definition, object, errors);
  const Known rejected = errors.AreWanted() ? Known::kReported : Known::kInvalid;
  fOutcomes->Remember(handle, typeName, count == 0 ? Known::kValid : rejected);
  return count;
}

// The callback may register another one in its own place, so the entry is not touched after the
// call, and the arguments stay alive until it returns.
ErrorCount TypeChecker::GetExtraValidationErrors(AtomText typeName, const Subject& object,
                                                 ErrorList& errors) const {
  if (fExtraValidations.empty()) return 0;
  const ProcEntry* entry = fExtraValidations.Find(SortableText(typeName));
  if (!entry) return 0;
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
