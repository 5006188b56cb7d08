// SPDX-License-Identifier: MIT
#include "posimpl/validator/SchemaCheck.h"

#include <cstring>
#include <exception>

#include "SafeStringAPIs.h"
#include "kap/KAPSharedBuff.h"
#include "kap/TOQException.h"
#include "posimpl/notation/TextReader.h"
#include "posimpl/validator/MetaSchema.h"
#include "posimpl/validator/StructValidator.h"

namespace NPOSValidatorImpl {

using KAP_T_MT::CKAPSharedBuff;
using KAP_T_MT::CKAPStringAtom;

namespace {

// The types that a schema may name.
struct KnownTypes {
  const StructValidator& fChecker;
  const Dict& fSchema;

  bool Has(AtomText name) const { return fChecker.IsIntrinsic(name) || fSchema.Find(name); }
};

// Writes nothing without a buffer, or when the host fails to return its bytes.
void WriteReason(KAPSharedBuffer* buffer, const char* beginning, const char* end) noexcept {
  if (!buffer) return;
  try {
    char* const place = reinterpret_cast<char*>(CKAPSharedBuff::GetBuffer(buffer));
    KAP_T_MT::sprintf_safe(place, CKAPSharedBuff::GetSize(buffer), "%s%s", beginning, end);
  } catch (...) {  // the object fails all the same
  }
}

void WriteUndefined(KAPSharedBuffer* buffer, const char* name) {
  constexpr const char* kBeginning = "Cannot locate definition of type ";
  const std::size_t length = std::strlen(kBeginning) + std::strlen(name);
  if (buffer && CKAPSharedBuff::GetSize(buffer) <= length) {
    throw KAP_T_MT::TOQException("Error buffer too small");
  }
  WriteReason(buffer, kBeginning, name);
}

// The extra validation of "TypeName"; the client data are the KnownTypes. A failure becomes a
// reason like any other.
long DictEntryDefinedCallback(POSObject* object, KAPStringAtom* /*typeName*/,
                              KAPSharedBuffer* buffer, void* clientData) noexcept {
  try {
    const AtomText name = Downcast<String>(object).Get();
    if (static_cast<const KnownTypes*>(clientData)->Has(name)) return 1;
    WriteUndefined(buffer, name);
  } catch (const std::exception& failure) {
    WriteReason(buffer, "Caught exception: ", failure.what());
  } catch (...) {
    WriteReason(buffer, "Caught unknown exception: ", "");
  }
  return 0;
}

CPOSObject ReadMetaSchema() {
  CPOSObject metaSchema = NPOSObjectImpl::CreateFromText(kMetaSchema, nullptr);
  if (metaSchema.IsNull()) throw POSException("CreateFromText failed");
  static_cast<void>(Downcast<Dict>(metaSchema.Handle()));
  return metaSchema;
}

}  // namespace

bool ValidateSchema(const CPOSObject& schema, POSMessageProc message) {
  StructValidator checker(ReadMetaSchema());
  KnownTypes known = {checker, Dict::GetInstance(schema.Handle())};
  checker.RegisterExtraValidation(CKAPStringAtom("TypeName"), &DictEntryDefinedCallback, &known,
                                  StructValidator::Callback::kOnlyReads);
  return checker.Validate(schema, CKAPStringAtom("StructSchema").Text(), message);
}

}  // namespace NPOSValidatorImpl
