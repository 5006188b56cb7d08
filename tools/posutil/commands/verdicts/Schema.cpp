#include "commands/verdicts/Schema.h"

#include <utility>

#include "base/Failure.h"
#include "base/Printable.h"
#include "commands/verdicts/MessageReceiver.h"

namespace PosUtil {

using namespace KAP_T_MT;

namespace {

CPOSDict AsDict(const CPOSObject& object, const std::string& name) {
  CPOSDict dict(object, true);
  if (dict.IsNull()) throw Failure(Printable(name) + ": a schema must be a dictionary of types");
  return dict;
}

// `check` takes the procedure for messages and returns the verdict. The check of a schema throws
// what other checks report; both become the same Failure.
template <class Check>
Verdict MakeCheck(const std::string& name, Library& library, Messages messages, Check check) {
  MessageReceiver receiver;
  Verdict verdict;
  try {
    verdict.fIsValid = check(messages == Messages::kWanted ? &MessageReceiver::Receive : nullptr);
  } catch (const std::exception& error) {
    receiver.Rethrow();
    library.CheckReports(name);
    throw Failure(ReportText(name, error.what()));
  }
  receiver.Rethrow();
  library.CheckReports(name);
  verdict.fMessages = receiver.Take();
  return verdict;
}

// Returns whether the library knows the type without a schema: only then is a schema valid that
// refers to it and does not define it.
bool IsIntrinsic(const std::string& type) {
  CPOSArray set = CPOSArray::New();
  set.Append(CPOSString(type.c_str()));
  CPOSDict definition = CPOSDict::New();
  definition.Put("category", CPOSString("union"));
  definition.Put("set", set);
  CPOSDict types = CPOSDict::New();
  types.Put((type + "_").c_str(), definition);
  return CPOSStructValidator::ValidateSchema(types, nullptr);
}

}  // namespace

Schema::Schema(const CPOSObject& object, std::string name, Library& library)
    : fTypes(AsDict(object, name)), fName(std::move(name)), fLibrary(library), fValidator(fTypes) {}

Verdict Schema::CheckItself(Messages messages) const {
  return MakeCheck(fName, fLibrary, messages, [this](POSMessageProc message) {
    return CPOSStructValidator::ValidateSchema(fTypes, message);
  });
}

void Schema::RequireItself() const {
  const Verdict verdict = CheckItself(Messages::kWanted);
  if (verdict.fIsValid) return;
  std::string text = Printable(fName) + ": the schema is not valid, so nothing was checked";
  for (const std::string& message : verdict.fMessages) text += "\n" + MessageLine(fName, message);
  throw Failure(text);
}

void Schema::RequireType(const std::string& type) const {
  // A definition must be a dictionary.
  const bool isKnown = fTypes.GetDict(type.c_str(), true) || IsIntrinsic(type);
  fLibrary.CheckReports(fName);  // a failure looks like an absent type
  if (isKnown) return;
  throw Failure(Printable(fName) + ": no type \"" + Printable(type) +
                    "\" (types: " + Printable(TypeNames()) + ")",
                kExitUsage);
}

Verdict Schema::Check(const CPOSObject& object, const CKAPStringAtom& type,
                      const std::string& objectName, Messages messages) const {
  return MakeCheck(objectName, fLibrary, messages, [&](POSMessageProc message) {
    return fValidator.Validate(object, type, message);
  });
}

std::string Schema::TypeNames() const {
  std::string names;
  for (CPOSDictIterator i(fTypes); !i.IsDone(); i.Next()) {
    names += (names.empty() ? "" : ", ") + std::string(i.CurKey());
  }
  return names.empty() ? "none" : names;
}

}  // namespace PosUtil
