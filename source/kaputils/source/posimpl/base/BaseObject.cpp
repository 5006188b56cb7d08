// SPDX-License-Identifier: MIT
#include "posimpl/base/BaseObject.h"

namespace NPOSObjectImpl {

constinit ObjectCount BaseObject::fNumPOSObjects;

BaseObject* BaseObject::AskHost(const POSObject* handle) noexcept {
  try {
    return static_cast<BaseObject*>(KAP_T_MT::CKAPContainer::BCGetInstance(
        const_cast<POSObject*>(handle), KAPUtilsAtoms::Get().POSObjectImpl));
  } catch (...) {  // asked whether there is one: no
    return nullptr;
  }
}

BaseObject& BaseObject::GetInstance(const POSObject* handle) {
  BaseObject* instance = GetInstanceNoThrow(handle);
  if (!instance) throw POSException("instance was not an POSObject");
  return *instance;
}

POSObject* BaseObject::PutIntoContainer(BaseObject* object, KAPDeleteProc deleteObject) {
  const KAPUtilsAtoms& atoms = KAPUtilsAtoms::Get();
  return KAP_T_MT::CKAPContainer::NewFullContainer(object, atoms.POSObjectImpl,
                                                   atoms.POSObjectInterface, deleteObject);
}

}  // namespace NPOSObjectImpl
