#pragma once

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to a raw pointer with its release procedure. See CPOSObject for ownership, errors and
// threads.
//
// A reference to another container (an object reference) is a raw pointer as well: its pointer is
// the container's handle, which holds one reference, and its release procedure is
// CPOSKAPObjRefCastToContainerAndRelease.
class CPOSRawPointer : public TPOSKind<POSRawPointerInterface, "IsPOSRawPointer",
                                       "downcast from CPOSObject to CPOSRawPointer failed"> {
 public:
  using TPOSKind::TPOSKind;
  // When this raises, the pointer stays the caller's.
  CPOSRawPointer(void* pointer, POSReleaseProc release)
      : TPOSKind(Call<"NewPOSRawPointer">(pointer, release), KAPAdopt()) {}

  // An object reference to `container`, with a reference of its own.
  static CPOSRawPointer NewKAPObjRef(KAPContainer* container);

  void* GetRawPointer() const { return Call<"GetRawPointer">(Handle()); }
  POSReleaseProc GetReleaseProc() const { return Call<"GetReleaseProc">(Handle()); }
};

// Releases the reference that an object reference holds on its container.
void CPOSKAPObjRefCastToContainerAndRelease(void* container) noexcept;

}  // namespace KAP_T_MT
