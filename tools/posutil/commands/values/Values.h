// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "POSDict.h"
#include "base/Loss.h"
#include "base/ValuePath.h"

namespace PosUtil {

// The kind of a value in a sentence: "a number", "an array".
std::string KindText(int type);

// The slots of an array from `begin` on. An empty object is an empty slot.
std::vector<KAP_T_MT::CPOSObject> ValuesFrom(const KAP_T_MT::CPOSArray& array, std::size_t begin);
// Gives the array these slots from `begin` on, which is not past its end.
void ReplaceFrom(KAP_T_MT::CPOSArray& array, std::size_t begin,
                 const std::vector<KAP_T_MT::CPOSObject>& values);

// The value at a path, or an empty object. With LossMode::kKeep, see Unescaped, the path is that in
// JSON.
KAP_T_MT::CPOSObject ValueAt(const KAP_T_MT::CPOSObject& root, const ValuePath& path,
                             LossMode loss);

// Returns whether two values are the same. A dictionary with more members is another value; empty
// objects are equal.
bool IsSame(const KAP_T_MT::CPOSObject& a, const KAP_T_MT::CPOSObject& b);

// A copy of a value, which shares its scalars; empty for an empty object. The library's own copy
// fails for a value that is nested very deep.
KAP_T_MT::CPOSObject DeepCopy(const KAP_T_MT::CPOSObject& value);

// Returns whether the value is a dictionary that stands for the JSON null, see TaggedJson.h, or for
// any JSON value that property objects do not have.
bool IsKeptNull(const KAP_T_MT::CPOSObject& value);
bool IsKeptValue(const KAP_T_MT::CPOSObject& value);
// With --loss=keep, the object in one more "$json" that would look kept without it; other values
// are their own. Escaped is the reverse.
KAP_T_MT::CPOSObject Unescaped(const KAP_T_MT::CPOSObject& value);
KAP_T_MT::CPOSObject Escaped(const KAP_T_MT::CPOSObject& value);

}  // namespace PosUtil
