// SPDX-License-Identifier: MIT
#pragma once

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to a raw pointer: a pointer that the library does not follow, with the procedure that
// releases what it points to. It never changes. See CPOSObject for ownership, errors and threads.
//
//   std::unique_ptr<Session> session = OpenSession();
//   const CPOSRawPointer owner(session.get(), &CloseSession);
//   session.release();                                 // owned by the object from here on
//
// An object reference is a raw pointer to a container: it holds one reference to the container, and
// its release procedure is CPOSKAPObjRefCastToContainerAndRelease. In this way a property object
// can hold whatever a component has put into a container.
class CPOSRawPointer : public TPOSKind<POSRawPointerInterface, "IsPOSRawPointer",
                                       "downcast from CPOSObject to CPOSRawPointer failed"> {
 public:
  using TPOSKind::TPOSKind;
  // Takes over what `pointer` points to; `release` may be null. When this throws (CKAPError
  // "invalid container", with a report), the pointer stays the caller's.
  CPOSRawPointer(void* pointer, POSReleaseProc release)
      : TPOSKind(Call<"NewPOSRawPointer">(pointer, release), KAPAdopt()) {}

  // An object reference to `container`, with a new reference; to one that was just made, with the
  // reference that it comes with. CKAPError "invalid container" for null, and when the host adds no
  // reference or the object cannot be made.
  [[nodiscard]] static CPOSRawPointer NewKAPObjRef(KAPContainer* container);
  [[nodiscard]] static CPOSRawPointer NewKAPObjRef(TKAPNewHandle<KAPContainer> made);

  // The pointer stays the object's. Both may be null.
  void* GetRawPointer() const { return Call<"GetRawPointer">(Handle()); }
  POSReleaseProc GetReleaseProc() const { return Call<"GetReleaseProc">(Handle()); }

 private:
  static CPOSRawPointer NewKAPObjRef(KAPContainerBaseGeneric reference);
};

// The release procedure of object references: releases the reference to the container.
void CPOSKAPObjRefCastToContainerAndRelease(void* container) noexcept;

}  // namespace KAP_T_MT
