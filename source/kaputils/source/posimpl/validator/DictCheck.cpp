#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

namespace {

// A dictionary whose required members are there, member by member. Constructing one reads the
// attributes that say what a member may be.
class MembersCheck {
 public:
  MembersCheck(const TypeCheck& check, const Dict* required)
      : fCheck(check),
        fKeyType(check.fDefinition.GetKept<String>(&Keywords::KeyType)),
        fValueType(check.fDefinition.GetKept<String>(&Keywords::ValueType)),
        fRequired(required),
        fOptional(check.fDefinition.GetKept<Dict>(&Keywords::Optional)) {}

  // "keytype", "required" and "optional" admit a member. "valuetype" does not, deliberately.
  [[gnu::always_inline]] ErrorCount Check(const SortableStringAtom& name,
                                          const Subject& value) const {
    ErrorCount count = 0;
    bool known = false;
    if (fKeyType) {
      count += CheckAs(Subject(name.Atom()), *fKeyType, name, "%s (key, type != %s):");
      known = true;
    }
    if (fValueType) {
      count += CheckAs(value, *fValueType, name, "%s (value, type != %s):");
    }
    if (const Kept<String> type = TypeIn(fRequired, name)) {
      count += CheckAs(value, *type, name, "%s (required, type != %s):");
      known = true;
    }
    if (const Kept<String> type = TypeIn(fOptional.Get(), name)) {
      count += CheckAs(value, *type, name, "%s (optional, type != %s):");
      known = true;
    }
    if (!known) {
      count += fCheck.Fail([&] { return FormatIntoPOSString("Unknown member %s", name.Text()); });
    }
    return count;
  }

 private:
  ErrorCount CheckAs(const Subject& part, const String& type, const SortableStringAtom& name,
                     const char* context) const {
    return fCheck.CheckPart(part, type.Get(),
                            [&] { return FormatIntoPOSString(context, name.Text(), type.Get()); });
  }

  // Empty when there is no dictionary, or it has no such member.
  Kept<String> TypeIn(const Dict* members, const SortableStringAtom& name) const {
    const CPOSObject* type = members ? members->Find(name) : nullptr;
    return type ? Kept<String>(*type, fCheck.fDefinition.MustKeep()) : Kept<String>();
  }

  const TypeCheck& fCheck;
  const Kept<String> fKeyType;
  const Kept<String> fValueType;
  const Dict* const fRequired;
  const Kept<Dict> fOptional;
};

// Member by member, where a callback may take the one at work out of the dictionary: its name and
// its value are kept, and the next one is found by the name. Apart from the ordinary loop, which is
// faster inline.
[[gnu::noinline]] ErrorCount CheckAndKeep(const MembersCheck& members, const Dict& dict) {
  ErrorCount count = 0;
  for (const DictEntry* entry = dict.Entries().First(); entry;) {
    const SortableStringAtom name = entry->GetKey();
    const CPOSObject value = entry->Value();
    count += members.Check(name, Subject(value.Handle()));
    entry = dict.Entries().FirstAfter(name);
  }
  return count;
}

ErrorCount CountMissing(const TypeCheck& check, const Dict& dict, const Dict& required) {
  ErrorCount count = 0;
  for (const DictEntry* entry = required.Entries().First(); entry; entry = DictTree::Next(entry)) {
    if (dict.Find(entry->GetKey())) continue;
    count += check.Fail(
        [=] { return FormatIntoPOSString("Missing required member %s", entry->GetKey().Text()); });
  }
  return count;
}

}  // namespace

ErrorCount CheckDict(const TypeCheck& check) {
  const Dict* dict = check.fObject.As<Dict>();
  if (!dict) return check.Fail("Dict object expected");
  const Kept<Dict> required = check.fDefinition.GetKept<Dict>(&Keywords::Required);
  const ErrorCount missing = required ? CountMissing(check, *dict, *required) : 0;
  if (missing > 0) return missing;

  const MembersCheck members(check, required.Get());
  if (check.fDefinition.MustKeep()) return CheckAndKeep(members, *dict);
  ErrorCount count = 0;
  for (const DictEntry* entry = dict->Entries().First(); entry; entry = DictTree::Next(entry)) {
    count += members.Check(entry->GetKey(), Subject(entry->Value().Handle()));
  }
  return count;
}

}  // namespace NPOSValidatorImpl
