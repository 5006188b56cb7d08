#pragma once

#include <memory>

#include "kap/KAPClientBase.h"
#include "kap/KAPContainer.h"
#include "pos/POSException.h"

// How the library's objects get into containers of the host, and out of them.

// Puts an object into a container as its primary instance: one reference for the caller. `Root` is
// the class that a container's instance is cast to. The host's error is thrown, and the object is
// destroyed then.
template <class Root, class Delete>
KAPContainer* KAPContain(std::unique_ptr<Root, Delete> object,
                         const KAP_T_MT::CKAPStringAtom& instanceName,
                         const KAP_T_MT::CKAPStringAtom& interfaceName,
                         KAPDeleteProc deleteObject) {
  KAPContainer* handle = KAP_T_MT::CKAPContainer::NewFullContainer(object.get(), instanceName,
                                                                   interfaceName, deleteObject);
  static_cast<void>(object.release());  // the container's now
  return handle;
}

// The instance of this name behind a handle; null when there is none. The host's error is thrown.
inline void* KAPFindInstance(KAPContainer* handle, const KAP_T_MT::CKAPStringAtom& instanceName) {
  return handle ? KAP_T_MT::CKAPContainer::GetInstance(handle, instanceName) : nullptr;
}

// Objects whose classes share a name with others: all of them derive from CKAPVirtualClientBase, so
// that their type can be asked, and nothing else is filed under these names.
using KAPFiledObject = KAP_T_MT::TKAPClientObject<KAP_T_MT::CKAPVirtualClientBase>;

// The object of this class behind a handle. POSException with the message Kind::kNotInstance when
// there is none; the host's error is thrown.
template <class Kind>
Kind& KAPInstanceOf(KAPContainer* handle, const KAP_T_MT::CKAPStringAtom& instanceName) {
  auto* const filed =
      static_cast<KAP_T_MT::CKAPVirtualClientBase*>(KAPFindInstance(handle, instanceName));
  auto* const object = dynamic_cast<Kind*>(filed);
  if (!object) [[unlikely]]
    throw KAP_T_MT::POSException(Kind::kNotInstance);
  return *object;
}
