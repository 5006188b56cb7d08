#include "pos/POSRawPointer.h"

namespace KAP_T_MT {

CPOSRawPointer CPOSRawPointer::NewKAPObjRef(KAPContainer* container) {
  KAPContainerBaseGeneric reference(container);
  CPOSRawPointer object(container, &CPOSKAPObjRefCastToContainerAndRelease);
  reference.Detach();  // the object holds it now
  return object;
}

void CPOSKAPObjRefCastToContainerAndRelease(void* container) noexcept {
  const CKAPContainerHolder released(static_cast<KAPContainer*>(container), true);
}

}  // namespace KAP_T_MT
