// SPDX-License-Identifier: MIT
#include "pos/POSRawPointer.h"

namespace KAP_T_MT {

CPOSRawPointer CPOSRawPointer::NewKAPObjRef(KAPContainer* container) {
  KAPContainerBaseGeneric reference(container);
  POSRawPointer* object =
      Call<"NewPOSRawPointer">(reference.Handle(), &CPOSKAPObjRefCastToContainerAndRelease);
  if (object) reference.Detach();  // the object holds it now
  return CPOSRawPointer(object, KAPAdopt());
}

void CPOSKAPObjRefCastToContainerAndRelease(void* container) noexcept {
  const CKAPContainerHolder released(static_cast<KAPContainer*>(container), true);
}

}  // namespace KAP_T_MT
