// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "kap/KAPClientBase.h"
#include "kap/KAPContainer.h"
#include "pos/POSException.h"

// The one way for the library's objects into containers of the host, and the one way to get at them
// again from a handle that a caller passes in.

// Puts an object into a container as its primary instance: one reference for the caller. `Root` is
// the class that the instance is cast to when it is found again, so `object` converts to it here,
// before its address loses the type. On an error of the host throws it and destroys the object.
template <class Root, class Delete>
KAPContainer* KAPContain(std::unique_ptr<Root, Delete> object,
                         const KAP_T_MT::CKAPStringAtom& instanceName,
                         const KAP_T_MT::CKAPStringAtom& interfaceName,
                         KAPDeleteProc deleteObject) {
  KAPContainer* handle = KAP_T_MT::CKAPContainer::NewFullContainer(object.get(), instanceName,
                                                                   interfaceName, deleteObject);
  static_cast<void>(object.release());  // the container owns it now
  return handle;
}

// The instance of that name in the container; null when there is none, or for a null handle. Throws
// the error that the host returns.
inline void* KAPFindInstance(KAPContainer* handle, const KAP_T_MT::CKAPStringAtom& instanceName) {
  return handle ? KAP_T_MT::CKAPContainer::GetInstance(handle, instanceName) : nullptr;
}

// The root of objects whose classes share an instance name: directories and validators do. All of
// them derive from CKAPVirtualClientBase and no other object has such a name, so a dynamic_cast can
// detect a handle of the wrong kind.
using KAPInstanceRoot = KAP_T_MT::CKAPVirtualClientBase;
using KAPInstanceOwner = KAP_T_MT::TKAPClientObject<KAPInstanceRoot>;

// The object of this class in the container. POSException with the message Kind::kNotInstance when
// there is none; throws the error that the host returns.
template <class Kind>
Kind& KAPInstanceOf(KAPContainer* handle, const KAP_T_MT::CKAPStringAtom& instanceName) {
  auto* const instance = static_cast<KAPInstanceRoot*>(KAPFindInstance(handle, instanceName));
  auto* const object = dynamic_cast<Kind*>(instance);
  if (!object) [[unlikely]]
    throw KAP_T_MT::POSException(Kind::kNotInstance);
  return *object;
}
