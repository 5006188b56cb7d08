// SPDX-License-Identifier: MIT
#pragma once

#include "formats/Handles.h"

namespace PosUtil {

// The null of a JSON text for a reader to whom it means something, as in a patch. No document can
// hold a raw pointer, so nothing else looks like a mark.
inline Handle NewNullMark() {
  return Owned(RawPointers::Call<"NewPOSRawPointer">(nullptr, nullptr));
}
inline bool IsNullMark(const Handle& value) {
  return !value.IsNull() && RawPointers::Call<"IsPOSRawPointer">(value.Handle());
}

}  // namespace PosUtil
