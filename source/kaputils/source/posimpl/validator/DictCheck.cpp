#include "posimpl/validator/Checks.h"

namespace NPOSValidatorImpl {

namespace {

// A dictionary whose required members are there, member by member. Constructing one reads the
// attributes that say what a member may be.
class MembersCheck {
 public:
  MembersCheck(const TypeCheck& check, const Dict* required)
      : fCheck(check),
        fKeyType(check.fDefinition.GetText(&Keywords::KeyType)),
        fValueType(check.fDefinition.GetText(&Keywords::ValueType)),
        fRequired(required),
        fOptional(check.fDefinition.Get<Dict>(&Keywords::Optional)) {}

  // "keytype", "required" and "optional" admit a member. "valuetype" does not, deliberately.
  ErrorCount Check(const SortableStringAtom& name, const Subject& value) const {
    ErrorCount count = 0;
    bool known = false;
    if (fKeyType) {
      count += CheckAs(Subject(name.Atom()), fKeyType, name, "%s (key, type != %s):");
      known = true;
    }
    if (fValueType) {
      count += CheckAs(value, fValueType, name, "%s (value, type != %s):");
    }
    if (const AtomText type = TypeIn(fRequired, name)) {
      count += CheckAs(value, type, name, "%s (required, type != %s):");
      known = true;
    }
    if (const AtomText type = TypeIn(fOptional, name)) {
      count += CheckAs(value, type, name, "%s (optional, type != %s):");
      known = true;
    }
    if (!known) {
      count += fCheck.Fail([&] { return FormatIntoPOSString("Unknown member %s", name.Text()); });
    }
    return count;
  }

 private:
  ErrorCount CheckAs(const Subject& part, AtomText type, const SortableStringAtom& name,
                     const char* context) const {
    return fCheck.CheckPart(part, type,
                            [&] { return FormatIntoPOSString(context, name.Text(), type); });
  }

  // Null when there is no dictionary, or no such member in it.
  static AtomText TypeIn(const Dict* members, const SortableStringAtom& name) {
    const CPOSObject* type = members ? members->Find(name) : nullptr;
    return type ? Downcast<String>(type->Handle()).Get() : nullptr;
  }

  const TypeCheck& fCheck;
  const AtomText fKeyType;
  const AtomText fValueType;
  const Dict* const fRequired;
  const Dict* const fOptional;
};

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
  const Dict* required = check.fDefinition.Get<Dict>(&Keywords::Required);
  const ErrorCount missing = required ? CountMissing(check, *dict, *required) : 0;
  if (missing > 0) return missing;

  const MembersCheck members(check, required);
  ErrorCount count = 0;
  for (const DictEntry* entry = dict->Entries().First(); entry; entry = DictTree::Next(entry)) {
    count += members.Check(entry->GetKey(), Subject(entry->Value().Handle()));
  }
  return count;
}

}  // namespace NPOSValidatorImpl
