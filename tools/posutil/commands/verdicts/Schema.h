#pragma once

#include <string>

#include "POSValidator.h"
#include "commands/verdicts/Verdict.h"
#include "program/Library.h"

namespace PosUtil {

// A dictionary of types to check documents against.
// Errors: Failure with the text of the library if a check cannot run, for example because of an
//   error in the schema.
class Schema {
 public:
  // `name` is the name of the schema in messages. Throws Failure if the object is not a dictionary.
  Schema(const KAP_T_MT::CPOSObject& object, std::string name, Library& library);

  // Checks the schema itself against the rules of the library.
  Verdict CheckItself(Messages messages) const;
  // Throws Failure with the messages if the schema is not valid.
  void RequireItself() const;
  // Throws Failure with kExitUsage if there is no type of this name.
  void RequireType(const std::string& type) const;

  Verdict Check(const KAP_T_MT::CPOSObject& object, const KAP_T_MT::CKAPStringAtom& type,
                const std::string& objectName, Messages messages) const;

 private:
  std::string TypeNames() const;

  const KAP_T_MT::CPOSDict fTypes;
  const std::string fName;
  Library& fLibrary;
  const KAP_T_MT::CPOSStructValidator fValidator;
};

}  // namespace PosUtil
