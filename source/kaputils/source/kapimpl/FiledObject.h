#pragma once

#include "kap/KAPClientBase.h"
#include "kap/KAPContainer.h"
#include "pos/POSException.h"

// Objects of the library that are no property objects: the primary instances of containers, filed
// under a name of KAPUtilsAtoms. Two classes may share a name, hence the type is asked as well: all
// of them rest on CKAPVirtualClientBase, and nothing else is filed under these names.

// Puts the object into a container: one reference for the caller.
inline KAPContainer* KAPContain(KAP_T_MT::TKAPClientObject<KAP_T_MT::CKAPVirtualClientBase> object,
                                const KAP_T_MT::CKAPStringAtom& instanceName,
                                const KAP_T_MT::CKAPStringAtom& interfaceName,
                                KAPDeleteProc deleteObject) {
  KAPContainer* handle = KAP_T_MT::CKAPContainer::NewFullContainer(object.get(), instanceName,
                                                                   interfaceName, deleteObject);
  static_cast<void>(object.release());  // the container's now
  return handle;
}

// The object of this class behind a handle. POSException with the message Kind::kNotInstance when
// there is none; an error of the host is raised.
template <class Kind>
Kind& KAPInstanceOf(KAPContainer* handle, const KAP_T_MT::CKAPStringAtom& instanceName) {
  auto* const filed = handle ? static_cast<KAP_T_MT::CKAPVirtualClientBase*>(
                                   KAP_T_MT::CKAPContainer::GetInstance(handle, instanceName))
                             : nullptr;
  auto* const object = dynamic_cast<Kind*>(filed);
  if (!object) [[unlikely]]
    throw KAP_T_MT::POSException(Kind::kNotInstance);
  return *object;
}
