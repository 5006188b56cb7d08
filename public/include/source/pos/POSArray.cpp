// SPDX-License-Identifier: MIT
#include "pos/POSArray.h"

namespace KAP_T_MT {

CPOSObject CPOSArray::GetAt(unsigned long index, POSNoThrow noThrow) const {
  POSObject* element = Call<"GetAt">(Handle(), index);
  if (element) return CPOSObject(element, KAPAdopt());
  if (!noThrow) throw POSException("CPOSArray::GetAt subscript failed");
  return {};
}

void CPOSArray::SetAtOrThrow(unsigned long index, const CPOSObject& object) {
  SetAt(index, object);
  if (object.IsNull() || GetAt(index, true).Handle() != object.Handle()) {
    throw POSException("CPOSArray::SetAt failed");
  }
}

void CPOSArray::AppendOrThrow(const CPOSObject& object) {
  const unsigned int before = Count();
  Append(object);
  if (Count() != before + 1) throw POSException("CPOSArray::Append failed");
}

}  // namespace KAP_T_MT
