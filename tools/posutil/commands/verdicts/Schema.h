#pragma once

#include <string>

#include "POSValidator.h"
#include "commands/verdicts/Verdict.h"
#include "program/Library.h"

namespace PosUtil {

// A dictionary of types that documents are checked against. What keeps a check from being made, an error in the schema
// for one, is a Failure with the text of the library.
class Schema {
 public:
  // `name` is that of the schema in messages. Failure for an object that is no dictionary.
  Schema(const KAP_T_MT::CPOSObject& object, std::string name, Library& library);

  // Whether it is a schema at all, by the rules of the library.
  Verdict CheckItself(Messages messages) const;
  // Failure when it is none, with the messages.
  void RequireItself() const;
  // Failure, of wrong usage, when there is no such type.
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
