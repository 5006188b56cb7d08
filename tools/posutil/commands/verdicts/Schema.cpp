// SPDX-License-Identifier: MIT
#include "commands/verdicts/Schema.h"

#include <algorithm>
#include <cstdint>
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

// A deep value of a union has messages for each alternative at each level. Only a few lines are
// shown: the work for them must not grow with the number of messages.
std::size_t LimitFor(const CheckOptions& options) {
  constexpr std::size_t kForEachShown = 100;
  constexpr std::size_t kAtLeast = 10'000;
  const std::size_t shown = options.fMaxMessages;
  return shown > SIZE_MAX / kForEachShown ? SIZE_MAX : std::max(shown * kForEachShown, kAtLeast);
}

// `check` takes the procedure for messages and returns whether the object is valid. The check of a
// schema throws what other checks report; both become the same Failure.
template <class Check>
Verdict MakeCheck(const std::string& name, Library& library, const CheckOptions& options,
                  const CheckedDocument& checked, Check check) {
  MessageReceiver receiver(LimitFor(options));
  Verdict verdict;
  try {
    verdict.fIsValid =
        check(options.fMessages == Messages::kWanted ? &MessageReceiver::Receive : nullptr);
  } catch (const std::exception& error) {
    receiver.Rethrow();
    library.CheckReports(name);
    throw Failure(ReportText(name, error.what()));
  }
  receiver.Rethrow();
  library.CheckReports(name);
  Explainer(checked, options.fBranches, options.fMaxMessages).Explain(receiver.Take(), verdict);
  verdict.fUnshown += receiver.Dropped();
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

Schema::Schema(const CPOSObject& object, std::string name, DocumentPlaces& places, Library& library)
    : fTypes(AsDict(object, name)),
      fName(std::move(name)),
      fPlaces(places),
      fLibrary(library),
      fValidator(fTypes) {}

Verdict Schema::CheckItself(const CheckOptions& options) const {
  const CheckedDocument checked = {fTypes, "StructSchema", &fPlaces, {}, nullptr};
  return MakeCheck(fName, fLibrary, options, checked, [this](POSMessageProc message) {
    return CPOSStructValidator::ValidateSchema(fTypes, message);
  });
}

void Schema::RequireItself(std::size_t maxMessages) const {
  const Verdict verdict = CheckItself({.fMaxMessages = maxMessages});
  if (verdict.fIsValid) return;
  std::string text = Printable(fName) + ": the schema is not valid, so nothing was checked";
  for (const VerdictMessage& message : verdict.fMessages) {
    text += "\n" + MessageLines(fName, fName, message);
  }
  if (verdict.fUnshown > 0) text += "\n" + std::to_string(verdict.fUnshown) + " more messages";
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
                      const std::string& objectName, DocumentPlaces& places,
                      const CheckOptions& options) const {
  const CheckedDocument checked = {object, type.Text(), &places, fTypes, &fPlaces};
  return MakeCheck(objectName, fLibrary, options, checked, [&](POSMessageProc message) {
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
