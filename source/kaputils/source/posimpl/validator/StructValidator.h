#pragma once

#include "posimpl/validator/BaseValidator.h"
#include "posimpl/validator/ErrorList.h"
#include "posimpl/validator/Intrinsics.h"
#include "posimpl/validator/Keywords.h"
#include "posimpl/validator/ProcEntry.h"
#include "posimpl/validator/PropertyObjects.h"
#include "posimpl/validator/Subject.h"

namespace NPOSValidatorImpl {

// A validator over a schema, which is a dictionary of type definitions:
//
//   < Age    < category int min 0 maxexcl 150 >
//     Person < category dict required < name string > optional < age Age > > >
//
// A type name is the name of an intrinsic type or a key of the schema; intrinsic types come first.
// Validating asks the host for nothing, and takes no memory, as long as there is nothing to say.
class StructValidator final : public BaseValidator {
 public:
  static constexpr const char* kNotInstance = "instance was not an StructValidator";

  // With `validateSchema`, TOQException "Schema is not valid" for a dictionary that is none.
  StructValidator(CPOSObject schema, bool validateSchema);

  // In a container: one reference for the caller.
  static POSValidator* NewContainer(CPOSObject schema, bool validateSchema);
  // POSException for any other handle.
  static StructValidator& GetInstance(POSValidator* handle);

  // Replaces the extra validation that the type had. A null callback is none.
  void RegisterExtraValidation(const KAP_T_MT::CKAPStringAtom& typeName,
                               KAP_T_MT::POSExtraValidationProc callback, void* clientData);

  bool Validate(const CPOSObject& object, AtomText typeName, POSMessageProc message) const override;

  // Validates a dictionary against the schema of schemas, see MetaSchema.h. Each type name in it
  // must be that of an intrinsic type or a key of the dictionary.
  static bool ValidateSchema(const CPOSObject& schema, POSMessageProc message);

  bool IsIntrinsic(AtomText typeName) const noexcept {
    return Intrinsic::Find(typeName, fWords) != nullptr;
  }

  // The checks, from part to part of an object. Each appends what it finds.
  ErrorCount GetObjectErrors(AtomText typeName, const Subject& object, ErrorList& errors) const;

  enum class IntrinsicCheck { kNotIntrinsic, kValid, kInvalid };
  IntrinsicCheck CheckIntrinsic(AtomText typeName, const Subject& object, ErrorList& errors) const;

 private:
  ErrorCount GetTypeDefinitionComplianceErrors(AtomText typeName, const Subject& object,
                                               ErrorList& errors) const;
  ErrorCount GetExtraValidationErrors(AtomText typeName, const Subject& object,
                                      ErrorList& errors) const;

  NPOSImpl::redblack_tree<ProcEntry> fExtraValidations;
  const CPOSObject fSchemaReference;
  const Dict& fSchema;
  const Keywords fWords;
};

}  // namespace NPOSValidatorImpl
