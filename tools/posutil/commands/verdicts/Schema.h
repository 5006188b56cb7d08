// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "POSValidator.h"
#include "commands/verdicts/Explainer.h"
#include "commands/verdicts/Verdict.h"
#include "formats/DocumentPlaces.h"
#include "program/Library.h"

namespace PosUtil {

// What a check does besides its result.
struct CheckOptions {
  Messages fMessages = Messages::kWanted;
  Branches fBranches = Branches::kClosest;
  std::size_t fMaxMessages = SIZE_MAX;  // to explain; the others only count
};

// A dictionary of types to check documents against.
// Errors: Failure with the text of the library if a check cannot run, for example because of an
//   error in the schema.
class Schema {
 public:
  // `name` is the name of the schema in messages, `places` those of its values; it must outlive
  // this. Throws Failure if the object is not a dictionary.
  Schema(const KAP_T_MT::CPOSObject& object, std::string name, DocumentPlaces& places,
         Library& library);

  const std::string& Name() const { return fName; }

  // Checks the schema itself against the rules of the library.
  Verdict CheckItself(const CheckOptions& options) const;
  // Throws Failure with at most `maxMessages` messages if the schema is not valid.
  void RequireItself(std::size_t maxMessages) const;
  // Throws Failure with kExitUsage if there is no type of this name.
  void RequireType(const std::string& type) const;

  Verdict Check(const KAP_T_MT::CPOSObject& object, const KAP_T_MT::CKAPStringAtom& type,
                const std::string& objectName, DocumentPlaces& places,
                const CheckOptions& options) const;

 private:
  std::string TypeNames() const;

  const KAP_T_MT::CPOSDict fTypes;
  const std::string fName;
  DocumentPlaces& fPlaces;
  Library& fLibrary;
  const KAP_T_MT::CPOSStructValidator fValidator;
};

}  // namespace PosUtil
