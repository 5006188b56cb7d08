#pragma once

#include "posimpl/validator/TypeCheck.h"

namespace NPOSValidatorImpl {

// What the "category" of a definition selects. All checks of a category run, one error does not end
// them, except where a check says so.
struct Category {
  KeywordName fName;
  ErrorCount (*fCheck)(const TypeCheck& check);

  // TOQException for any other name.
  static const Category& Get(AtomText name, const Keywords& words);
};

// "int" and "real": min, max, minexcl, maxexcl.
ErrorCount CheckNumber(const TypeCheck& check);
// minlen and maxlen in bytes, illegalchars, oneof.
ErrorCount CheckString(const TypeCheck& check);
// minlen and maxlen in 16-bit units.
ErrorCount CheckUnicodeString(const TypeCheck& check);
// minlen and maxlen in bytes; oneof of its type name.
ErrorCount CheckBinData(const TypeCheck& check);
// Raw pointers by all their names.
ErrorCount CheckReference(const TypeCheck& check);
// minlen and maxlen in members. membertype: the type of all of them, or the types one by one.
ErrorCount CheckArray(const TypeCheck& check);
// required and optional (type by name of the member), keytype, valuetype.
ErrorCount CheckDict(const TypeCheck& check);
// set: at least one of these types.
ErrorCount CheckUnion(const TypeCheck& check);
// set: all of these types.
ErrorCount CheckIntersection(const TypeCheck& check);

}  // namespace NPOSValidatorImpl
