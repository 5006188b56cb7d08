// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/Loss.h"
#include "base/ValuePath.h"
#include "commands/values/Slot.h"
#include "formats/DocumentPlaces.h"
#include "formats/Format.h"
#include "program/Session.h"

namespace PosUtil {

// A document that a command reads to change another one: a value or a patch. In JSON, its nulls
// count: see OpenJsonWithNulls.
class Change {
 public:
  // A file in a format. Throws Failure.
  Change(const Reader& reader, const std::string& fileName, Session& session);
  // A JSON text; `name` is its name in messages. Throws Failure.
  Change(std::string name, const std::string& json, Session& session);
  // An object that comes from elsewhere.
  Change(const KAP_T_MT::CPOSObject& object, Session& session);

  const KAP_T_MT::CPOSObject& Object() const { return fObject; }
  // Returns whether the value is null. An empty object is.
  bool IsNull(const KAP_T_MT::CPOSObject& value) const;

  // Puts a copy of a value of the change into the slot, or inserts it there. `place` is the path to
  // the value. A null that a dictionary cannot hold is a loss.
  void Put(Slot& slot, const KAP_T_MT::CPOSObject& value, const ValuePath& place);
  void Insert(Slot& slot, const KAP_T_MT::CPOSObject& value, const ValuePath& place);
  // Inserts a value of the document itself, as it is; `place` is the path to what moves it.
  void Move(Slot& slot, const KAP_T_MT::CPOSObject& value, const ValuePath& place);
  // A copy of a value without null marks: empty for null. Copy is for a comparison: it counts no
  // losses.
  KAP_T_MT::CPOSObject Settled(const KAP_T_MT::CPOSObject& value, const ValuePath& place);
  KAP_T_MT::CPOSObject Copy(const KAP_T_MT::CPOSObject& value) const;
  // Returns whether dictionaries may stand for JSON values, see IsKeptValue.
  bool KeepsValues() const { return Loss() == LossMode::kKeep; }
  LossMode Loss() const { return fSession.Loss(); }
  // Throws the error about a value of the change.
  [[noreturn]] void FailAt(const ValuePath& place, const std::string& message);
  // See Session::ReportLosses. With several documents, warns about the first one that loses.
  void ReportLosses();

 private:
  Change(const Reader* reader, std::string name, std::unique_ptr<Documents> documents,
         Session& session);
  void LoseMember(const ValuePath& place);

  Session& fSession;
  std::string fName;
  std::unique_ptr<Documents> fDocuments;  // holds the text
  KAP_T_MT::CPOSObject fObject;
  std::optional<DocumentPlaces> fPlaces;  // of a file or a JSON text
  Losses fLosses;
  bool fHasLosses = false;
  bool fIsReported = false;
};

}  // namespace PosUtil
