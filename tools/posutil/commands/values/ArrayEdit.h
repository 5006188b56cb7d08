// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "POSDict.h"

namespace PosUtil {

// The slots of an array that several changes one after another insert into. The library's arrays
// have no insertion, and one that rewrites the slots after it takes 8 ms in an array of 20 000.
// What is not written back is lost: the array of a failed change is dropped with its document.
class ArrayEdit {
 public:
  using Slots = std::vector<KAP_T_MT::CPOSObject>;

  ArrayEdit() = default;
  ArrayEdit(const ArrayEdit&) = delete;
  ArrayEdit& operator=(const ArrayEdit&) = delete;

  // The slots of the array, from now on here; those of another array are written back first.
  Slots& Begin(const KAP_T_MT::CPOSArray& array);
  // Those of the container, or null when they are not here.
  Slots* Find(const KAP_T_MT::CPOSObject& container);
  // Writes the slots back to their array.
  void End();

 private:
  KAP_T_MT::CPOSArray fArray;
  Slots fSlots;
};

}  // namespace PosUtil
