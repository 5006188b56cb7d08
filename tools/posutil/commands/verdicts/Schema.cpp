// SPDX-License-Identifier: MIT
#include "commands/verdicts/Schema.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "base/Failure.h"
#include "base/Printable.h"
#include "commands/verdicts/MessageReceiver.h"
#include "formats/Visitor.h"

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

// Finds the empty slots of a document, which the library cannot check.
class EmptySlots final : public Visitor {
 public:
  EmptySlots(const CheckedDocument& checked, const CheckOptions& options, Verdict& verdict)
      : fChecked(checked), fOptions(options), fVerdict(verdict) {}

  // Returns whether there is one; each is a message.
  bool Find(const std::string& name) {
    Visit(fChecked.fObject, name, *this);
    return fCount > 0;
  }

  void At(const Place& place) override {
    fPath.resize(place.fDepth, PathStep(0));
    if (place.fDepth > 0) {
      fPath.back() = place.fKey ? PathStep(std::string(place.fKey)) : PathStep(place.fIndex);
    }
  }
  void Number(double) override {}
  void String(const char*) override {}
  void UnicodeString(const unsigned short*) override {}
  void BinData(const char*, const unsigned char*, std::size_t) override {}
  void RawPointer(const void*) override {}
  void EmptySlot() override {
    ++fCount;
    if (fOptions.fMessages == Messages::kUnwanted) return;
    if (fVerdict.fMessages.size() == fOptions.fMaxMessages) return void(++fVerdict.fUnshown);
    fVerdict.fMessages.push_back({.fText = "An empty slot (null) of an array has no type",
                                  .fPath = JsonPointer(fPath),
                                  .fPlace = fChecked.fPlaces->PlaceOf(fPath, Positions::kValue)});
  }
  void BeginArray(std::size_t) override {}
  void BeginDict(POSDict*) override {}
  void EndArray(const Place&, std::size_t) override {}
  void EndDict(const Place&, std::size_t) override {}

 private:
  const CheckedDocument& fChecked;
  const CheckOptions& fOptions;
  Verdict& fVerdict;
  ValuePath fPath;
  std::size_t fCount = 0;
};

// Runs `check`, which returns whether the object is valid. The check of a schema throws what other
// checks report; both become the same Failure.
template <class Check>
bool RunCheck(const std::string& name, Library& library, MessageReceiver& receiver, Check check) {
  try {
    const bool isValid = check();
    receiver.Rethrow();
    library.CheckReports(name);
    return isValid;
  } catch (const Failure&) {
    throw;
  } catch (const std::exception& error) {
    receiver.Rethrow();
    library.CheckReports(name);
    throw Failure(ReportText(name, error.what()));
  }
}

// `check` takes the procedure for messages.
template <class Check>
Verdict MakeCheck(const std::string& name, Library& library, const CheckOptions& options,
                  const CheckedDocument& checked, Check check) {
  MessageReceiver receiver(LimitFor(options));
  Verdict verdict;
  try {
    verdict.fIsValid = RunCheck(name, library, receiver, [&] {
      return check(options.fMessages == Messages::kWanted ? &MessageReceiver::Receive : nullptr);
    });
  } catch (const Failure& failure) {
    const bool isSlot = std::string_view(failure.what()).ends_with("GetAt subscript failed");
    if (!isSlot || !EmptySlots(checked, options, verdict).Find(name)) throw;
    return verdict;
  }
  RunCheck(name, library, receiver, [&] {
    Explainer(checked, options.fBranches, options.fMaxMessages).Explain(receiver.Take(), verdict);
    return true;
  });
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
  const CheckedDocument checked = {fTypes, "StructSchema", &fPlaces, {}, nullptr, {}};
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
  if (verdict.fUnshown > 0) {
    text += "\n" + std::to_string(verdict.fUnshown) + " more message" +
            (verdict.fUnshown == 1 ? "" : "s");
  }
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
  const auto checkAgain = [this](const CPOSObject& value, const std::string& innerType,
                                 std::size_t limit) {
    MessageReceiver receiver(limit);
    const CKAPStringAtom typeAtom(innerType.c_str());
    static_cast<void>(fValidator.Validate(value, typeAtom, &MessageReceiver::Receive));
    receiver.Rethrow();
    // There is less stack than for the first check, so it may fail where that one did not.
    if (!fLibrary.TakeReports().empty()) return MessageTexts();
    return MessageTexts{receiver.Take(), receiver.Dropped()};
  };
  const CheckedDocument checked = {object, type.Text(), &places, fTypes, &fPlaces, checkAgain};
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
