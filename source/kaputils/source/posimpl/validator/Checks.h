// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "posimpl/validator/TypeCheck.h"

namespace NPOSValidatorImpl {

// The checks, one a category, and the attributes that each of them reads.

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

// The messages for a length below "minlen" and above "maxlen". The bound is their argument, a "%d".
struct LengthMessages {
  const char* fBelow;
  const char* fAbove;
};

// minlen and maxlen, for everything that has a length.
ErrorCount CheckLength(const TypeCheck& check, std::size_t length, const LengthMessages& messages);

}  // namespace NPOSValidatorImpl
