// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPClientBase.h"
#include "pos/POSValidatorInterfaces.h"
#include "posimpl/validator/Keywords.h"
#include "posimpl/validator/ProcEntry.h"
#include "posimpl/validator/PropertyObjects.h"
#include "posimpl/validator/TypeChecker.h"

namespace NPOSValidatorImpl {

using KAP_T_MT::POSMessageProc;

// What the handle of a validator stands for.
class BaseValidator : public KAP_T_MT::CKAPVirtualClientBase {
 public:
  // Whether the object complies with the type. If not, `message`, unless null, is called for each
  // reason. When the check cannot be made, an exception says why, and there are no messages.
  virtual bool Validate(const CPOSObject& object, AtomText typeName,
                        POSMessageProc message) const = 0;
};

// A validator over a schema, which is a dictionary of type definitions:
//
//   < Age    < category int min 0 maxexcl 150 >
//     Person < category dict required < name string > optional < age Age > > >
//
// A type name is the name of an intrinsic type or a key of the schema; intrinsic types come first.
// Without extra validations, checking a valid object makes no host call and allocates nothing,
// except where it is nested deep, see Outcomes.h.
class StructValidator final : public BaseValidator {
 public:
  static constexpr const char* kNotInstance = "instance was not an StructValidator";

  // The schema is not checked, see SchemaCheck.h.
  explicit StructValidator(CPOSObject schema);

  // In a container: one reference for the caller.
  static POSValidator* NewContainer(CPOSObject schema);
  // POSException for any other handle.
  static StructValidator& GetInstance(POSValidator* handle);

  // What a callback may do. One that only reads costs a check nothing; one that may change the
  // document or the schema makes each step keep references to what it works on.
  enum class Callback { kOnlyReads, kMayChange };

  // Replaces the extra validation that the type had. A null callback removes it.
  void RegisterExtraValidation(const KAP_T_MT::CKAPStringAtom& typeName,
                               KAP_T_MT::POSExtraValidationProc callback, void* clientData,
                               Callback effect);

  // Whether a callback may change something during a check.
  bool MustKeep() const noexcept { return fMayChange && !fExtraValidations.empty(); }

  bool Validate(const CPOSObject& object, AtomText typeName, POSMessageProc message) const override;

  bool IsIntrinsic(AtomText typeName) const noexcept {
    return Intrinsic::Find(typeName, fWords) != nullptr;
  }

 private:
  ExtraValidations fExtraValidations;
  const CPOSObject fSchemaReference;
  const Dict& fSchema;
  const Keywords fWords;
  bool fMayChange = false;
};

}  // namespace NPOSValidatorImpl
