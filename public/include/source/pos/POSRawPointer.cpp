// SPDX-License-Identifier: MIT
#include "pos/POSRawPointer.h"

#include <utility>

namespace KAP_T_MT {

CPOSRawPointer CPOSRawPointer::NewKAPObjRef(KAPContainer* container) {
  return NewKAPObjRef(KAPContainerBaseGeneric(container));
}

CPOSRawPointer CPOSRawPointer::NewKAPObjRef(TKAPNewHandle<KAPContainer> made) {
  KAPContainerBaseGeneric reference(std::move(made));
  if (reference.IsNull()) CKAPContainer::ThrowInvalidContainerException();
  return NewKAPObjRef(std::move(reference));
}

CPOSRawPointer CPOSRawPointer::NewKAPObjRef(KAPContainerBaseGeneric reference) {
  POSRawPointer* object =
      Call<"NewPOSRawPointer">(reference.Handle(), &CPOSKAPObjRefCastToContainerAndRelease);
  if (object) static_cast<void>(reference.Detach());  // the object holds it now
  return CPOSRawPointer(object, KAPAdopt());
}

void CPOSKAPObjRefCastToContainerAndRelease(void* container) noexcept {
  const CKAPContainerHolder released(static_cast<KAPContainer*>(container), KAPAdopt());
}

}  // namespace KAP_T_MT
