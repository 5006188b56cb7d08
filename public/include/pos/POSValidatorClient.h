// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "kap/KAPContainer.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPStringAtom.h"
#include "pos/POSDictClient.h"
#include "pos/POSValidatorInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The method tables of all implementations of validators, emptied when the runtime unbinds itself.
// As with streams, it does not release handles: each wrapper releases its own.
class CPOSValidatorTerminate : public TDelVTabList<POSValidatorInterface> {};

// A reference to a validator of any component.
//
//   const CPOSStructValidator validator(schema);
//   if (!validator.Validate(person, "Person", &PrintMessage)) return 1;
//
// Ownership: holds one reference, released on destruction; copies share the same validator.
// Errors: CKAPError "invalid container" for a handle that is null or has no validator's methods,
//   and when the host does not add a reference; "couldn't get signature" for a container without a
//   primary instance.
// Threads: see POSValidatorInterfaces.h.
class CPOSValidator : public TKAPTypedContainer<CPOSValidator, KAPContainerBaseGeneric> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;

  // Whether the object complies with the type. If not, `message`, unless null, is called for each
  // reason. False also, with a report of the validator, when the check could not be made.
  // POSException "a key, path or type name is null".
  [[nodiscard]] bool Validate(const CPOSObject& object, const CKAPStringAtom& typeName,
                              POSMessageProc message) const;
  [[nodiscard]] bool Validate(const CPOSObject& object, const char* typeName,
                              POSMessageProc message) const {
    return Validate(object, POSAtomOf(typeName), message);
  }
  [[nodiscard]] bool Validate(const CPOSObject& object, std::string_view typeName,
                              POSMessageProc message) const {
    return Validate(object, CKAPStringAtom(typeName), message);
  }

  // Throws as the constructors do unless the container has the methods.
  static void CheckMethods(POSValidator* handle) { fTerm.InitVTab(handle); }

 private:
  static constinit CPOSValidatorTerminate fTerm;
};

// Loads the table of POSStructValidatorInterface, even one that is not stale. Whether it is loaded
// now; the next use loads it once more. Throws for a procedure that the host lacks
// (kap/KAPInterfaceClient.h).
inline bool ConstructPOSStructValidatorInterfaceProcs() {
  return TKAPInterfaceClient<POSStructValidatorInterface>::LoadProcTable(true);
}
// Loads the table if it is stale. Whether it is loaded and current now.
inline bool GetGlobalPOSStructValidatorInterfaceProcs() noexcept {
  return TKAPInterfaceClient<POSStructValidatorInterface>::TryRefresh();
}

// Fills the slots with the methods of a validator's container; see KAPVTabInitProc.
inline int ConstructPOSValidatorVirtualInterfaceMethods(POSValidator* validator, int required,
                                                        KAPVTabGeneric::Slot* slots) {
  return TInterfaceConstructor<POSValidatorInterface>::InitProc(validator, required, slots);
}

// A reference to a validator over a schema of one's own. When the interface is gone, its
// constructor and its own calls throw the CKAPError with the empty message
// (kap/KAPInterfaceClient.h), without a report.
class CPOSStructValidator : public CPOSValidator {
 public:
  // The schema is kept, not copied, and not checked. CKAPError "invalid container", with a report,
  // when there can be no validator.
  explicit CPOSStructValidator(const CPOSDict& schema);
  // From a handle, as CPOSValidator. They do not check the implementation: for a validator of
  // another component, RegisterCallbackProc reports a failure and changes nothing.
  using CPOSValidator::CPOSValidator;

  // Registers `callback`, which is then called for each object that complies with the type.
  // Replaces the type's previous callback; null removes it. A failure is reported and changes
  // nothing.
  void RegisterCallbackProc(const CKAPStringAtom& typeName, POSExtraValidationProc callback,
                            void* clientData);
  void RegisterCallbackProc(const char* typeName, POSExtraValidationProc callback,
                            void* clientData) {
    RegisterCallbackProc(POSAtomOf(typeName), callback, clientData);
  }
  void RegisterCallbackProc(std::string_view typeName, POSExtraValidationProc callback,
                            void* clientData) {
    RegisterCallbackProc(CKAPStringAtom(typeName), callback, clientData);
  }

  // Whether the dictionary is a schema; `message` as for Validate. What the check throws reaches
  // the caller, as std::exception.
  [[nodiscard]] static bool ValidateSchema(const CPOSDict& schema, POSMessageProc message);
};

}  // namespace KAP_T_MT
