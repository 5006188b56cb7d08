// SPDX-License-Identifier: MIT
#include "commands/values/ArrayEdit.h"

#include <utility>

#include "commands/values/Values.h"

namespace PosUtil {

using namespace KAP_T_MT;

ArrayEdit::Slots& ArrayEdit::Begin(const CPOSArray& array) {
  if (Slots* const slots = Find(array)) return *slots;
  End();
  fSlots = ValuesFrom(array, 0);
  fArray = array;
  return fSlots;
}

ArrayEdit::Slots* ArrayEdit::Find(const CPOSObject& container) {
  return !fArray.IsNull() && fArray.Handle() == container.Handle() ? &fSlots : nullptr;
}

void ArrayEdit::End() {
  if (fArray.IsNull()) return;
  CPOSArray array = std::exchange(fArray, CPOSArray());
  ReplaceFrom(array, 0, std::exchange(fSlots, {}));
}

}  // namespace PosUtil
