// The check of a schema: that it complies with the schema of schemas, and that the types which it
// names exist.

#include <cstring>
#include <exception>
#include <string_view>

#include "Downcast.h"
#include "MetaSchema.h"
#include "SafeStringAPIs.h"
#include "StructValidator.h"
#include "kap/KAPSharedBuff.h"
#include "kap/TOQException.h"

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

// Where a callback writes its reason; nowhere without a buffer.
struct ReasonPlace {
  char* fText = nullptr;
  std::size_t fSize = 0;

  ReasonPlace() noexcept = default;
  explicit ReasonPlace(KAPSharedBuffer* buffer)
      : fText(reinterpret_cast<char*>(CKAPSharedBuff::GetBuffer(buffer))),
        fSize(CKAPSharedBuff::GetSize(buffer)) {}

  void Write(const char* beginning, const char* end) const noexcept {
    KAP_T_MT::sprintf_safe(fText, fSize, "%s%s", beginning, end);
  }
};

void WriteUndefined(const ReasonPlace& reason, const char* name) {
  constexpr std::string_view kBeginning = "Cannot locate definition of type ";
  if (!reason.fText) return;
  if (reason.fSize <= kBeginning.size() + std::strlen(name)) {
    throw KAP_T_MT::TOQException("Error buffer too small");
  }
  reason.Write(kBeginning.data(), name);
}

// The extra validation of "TypeName"; the client data are the KnownTypes. What goes wrong is a
// reason like any other.
long DictEntryDefinedCallback(POSObject* object, KAPStringAtom* /*typeName*/,
                              KAPSharedBuffer* buffer, void* clientData) noexcept {
  ReasonPlace reason;
  try {
    if (buffer) reason = ReasonPlace(buffer);
    const AtomText name = Downcast<String>(object).Get();
    if (static_cast<const KnownTypes*>(clientData)->Has(name)) return 1;
    WriteUndefined(reason, name);
  } catch (const std::exception& failure) {
    reason.Write("Caught exception: ", failure.what());
  } catch (...) {
    reason.Write("Caught unknown exception: ", "");
  }
  return 0;
}

CPOSObject ReadMetaSchema() {
  CPOSObject metaSchema = BaseObject::CreateFromText(kMetaSchema, nullptr);
  if (metaSchema.IsNull()) throw POSException("CreateFromText failed");
  static_cast<void>(Downcast<Dict>(metaSchema.Handle()));
  return metaSchema;
}

}  // namespace

bool StructValidator::ValidateSchema(const CPOSObject& schema, POSMessageProc message) {
  StructValidator checker(ReadMetaSchema(), false);
  KnownTypes known = {checker, Dict::GetInstance(schema.Handle())};
  checker.RegisterExtraValidation(CKAPStringAtom("TypeName"), &DictEntryDefinedCallback, &known);
  return checker.Validate(schema, CKAPStringAtom("StructSchema").Text(), message);
}

}  // namespace NPOSValidatorImpl
