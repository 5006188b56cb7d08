// SPDX-License-Identifier: MIT
#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

namespace {

// The members of a dictionary (of any type, or null) by their names, which ascend from look-up to
// look-up, as in a walk over another dictionary. Most are found at once, without a search.
class InOrder {
 public:
  explicit InOrder(const Dict* members) noexcept
      : fMembers(members), fNext(members ? members->Entries().First() : nullptr) {}

  // Null when there is none.
  POSObject* Find(const SortableStringAtom& name) noexcept {
    for (int steps = 0; fNext; ++steps) {
      const int order = SortableStringAtom::Compare(name, fNext->GetKey());
      if (order < 0) return nullptr;
      if (order == 0) return std::exchange(fNext, DictTree::Next(fNext))->Value();
      fNext = steps < kSteps ? DictTree::Next(fNext) : fMembers->Entries().FirstFrom(name);
    }
    return nullptr;
  }

 private:
  static constexpr int kSteps = 4;

  const Dict* const fMembers;
  const DictEntry* fNext;
};

// A dictionary whose required members are there, member by member. Constructing one reads the
// attributes that say what a member may be.
class MembersCheck {
 public:
  MembersCheck(const TypeCheck& check, const Dict* required)
      : fCheck(check),
        fKeyType(check.fDefinition.GetKept<String>(Attribute::kKeyType)),
        fValueType(check.fDefinition.GetKept<String>(Attribute::kValueType)),
        fRequired(required),
        fOptional(check.fDefinition.GetKept<Dict>(Attribute::kOptional)) {}

  ErrorCount CheckInOrder(const Dict& dict) const;
  // The same where a callback may change the dictionary.
  [[gnu::noinline]] ErrorCount CheckAndKeep(const Dict& dict) const;

 private:
  // "keytype", "required" and "optional" admit a member. "valuetype" does not, deliberately. The
  // names of its types are looked up when they are needed, and kept with `kMustKeep`.
  template <bool kMustKeep, class FindRequired, class FindOptional>
  [[gnu::always_inline]] ErrorCount Check(const SortableStringAtom& name, const Subject& value,
                                          FindRequired findRequired,
                                          FindOptional findOptional) const {
    ErrorCount count = 0;
    bool known = false;
    if (fKeyType) {
      count += CheckAs(Subject(name.Atom()), *fKeyType, name, "%s (key, type != %s):");
      known = true;
    }
    if (fValueType) {
      count += CheckAs(value, *fValueType, name, "%s (value, type != %s):");
    }
    if (POSObject* const required = findRequired(name)) {
      const Kept<String> type(required, kMustKeep);
      count += CheckAs(value, *type, name, "%s (required, type != %s):");
      known = true;
    }
    if (POSObject* const optional = findOptional(name)) {
      const Kept<String> type(optional, kMustKeep);
      count += CheckAs(value, *type, name, "%s (optional, type != %s):");
      known = true;
    }
    if (!known) {
      count += fCheck.Fail([&] { return FormatIntoPOSString("Unknown member %s", name.Text()); });
    }
    return count;
  }

  ErrorCount CheckAs(const Subject& part, const String& type, const SortableStringAtom& name,
                     const char* context) const {
    return fCheck.CheckPart(part, type.Get(),
                            [&] { return FormatIntoPOSString(context, name.Text(), type.Get()); });
  }

  const TypeCheck& fCheck;
  const Kept<String> fKeyType;
  const Kept<String> fValueType;
  const Dict* const fRequired;
  const Kept<Dict> fOptional;
};

ErrorCount MembersCheck::CheckInOrder(const Dict& dict) const {
  InOrder required(fRequired);
  InOrder optional(fOptional.Get());
  ErrorCount count = 0;
  for (const DictEntry* entry = dict.Entries().First(); entry; entry = DictTree::Next(entry)) {
    count += Check<false>(
        entry->GetKey(), Subject(entry->Value()),
        [&](const SortableStringAtom& name) { return required.Find(name); },
        [&](const SortableStringAtom& name) { return optional.Find(name); });
  }
  return count;
}

// A callback may take the member at work out of the dictionary: its name and its value are kept,
// and the next one is found by the name.
ErrorCount MembersCheck::CheckAndKeep(const Dict& dict) const {
  const auto findIn = [](const Dict* members) {
    return [=](const SortableStringAtom& name) { return members ? members->Find(name) : nullptr; };
  };
  ErrorCount count = 0;
  for (const DictEntry* entry = dict.Entries().First(); entry;) {
    const SortableStringAtom name = entry->GetKey();
    const CPOSObject value = BaseObject::Share(entry->Value());
    count += Check<true>(name, Subject(value.Handle()), findIn(fRequired), findIn(fOptional.Get()));
    entry = dict.Entries().FirstAfter(name);
  }
  return count;
}

ErrorCount CountMissing(const TypeCheck& check, const Dict& dict, const Dict& required) {
  InOrder members(&dict);
  ErrorCount count = 0;
  for (const DictEntry* entry = required.Entries().First(); entry; entry = DictTree::Next(entry)) {
    if (members.Find(entry->GetKey())) continue;
    count += check.Fail(
        [=] { return FormatIntoPOSString("Missing required member %s", entry->GetKey().Text()); });
  }
  return count;
}

}  // namespace

ErrorCount CheckDict(const TypeCheck& check) {
  const Dict* dict = check.fObject.As<Dict>();
  if (!dict) return check.Fail("Dict object expected");
  const Kept<Dict> required = check.fDefinition.GetKept<Dict>(Attribute::kRequired);
  const ErrorCount missing = required ? CountMissing(check, *dict, *required) : 0;
  if (missing > 0) return missing;

  const MembersCheck members(check, required.Get());
  return check.fChecker.MustKeep() ? members.CheckAndKeep(*dict) : members.CheckInOrder(*dict);
}

}  // namespace NPOSValidatorImpl
