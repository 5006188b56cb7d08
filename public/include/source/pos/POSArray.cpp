#include "pos/POSArray.h"

namespace KAP_T_MT {

CPOSObject CPOSArray::GetAt(unsigned long index, bool noThrow) const {
  POSObject* element = Call<"GetAt">(Handle(), index);
  if (element) return CPOSObject(element, KAPAdopt());
  if (!noThrow) throw POSException("CPOSArray::GetAt subscript failed");
  return {};
}

}  // namespace KAP_T_MT
