// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "POSDict.h"
#include "base/Loss.h"

namespace PosUtil {

// Returns whether the value is an array or a dictionary.
bool IsContainer(const KAP_T_MT::CPOSObject& value);
// The kind of a value in a sentence: "a number", "an array".
std::string KindText(int type);
// The same for a value, which is not empty; with LossMode::kKeep, a kept one is what it is in JSON.
std::string KindText(const KAP_T_MT::CPOSObject& value, LossMode loss);
// The type of a value; with LossMode::kKeep, that of a kept number is that of a number, and any
// other kept value has none: nothing.
std::optional<int> TypeOf(const KAP_T_MT::CPOSObject& value, LossMode loss);

// The slots of an array from `begin` on. An empty object is an empty slot.
std::vector<KAP_T_MT::CPOSObject> ValuesFrom(const KAP_T_MT::CPOSArray& array, std::size_t begin);
// Gives the array these slots from `begin` on, which is not past its end.
void ReplaceFrom(KAP_T_MT::CPOSArray& array, std::size_t begin,
                 const std::vector<KAP_T_MT::CPOSObject>& values);

// Returns whether the value is a dictionary that stands for the JSON null, see TaggedJson.h, or for
// any JSON value that property objects do not have.
bool IsKeptNull(const KAP_T_MT::CPOSObject& value);
bool IsKeptValue(const KAP_T_MT::CPOSObject& value);
// With --loss=keep, the object in one more "$json" that would look kept without it; other values
// are their own. Escaped is the reverse.
KAP_T_MT::CPOSObject Unescaped(const KAP_T_MT::CPOSObject& value);
KAP_T_MT::CPOSObject Escaped(const KAP_T_MT::CPOSObject& value);

}  // namespace PosUtil
