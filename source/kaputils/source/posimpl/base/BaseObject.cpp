#include "posimpl/base/BaseObject.h"

#include "kapimpl/base/ContainedObject.h"

namespace NPOSObjectImpl {

constinit std::atomic<unsigned int> BaseObject::fNumPOSObjects = 0;

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

POSObject* BaseObject::PutIntoContainer(std::unique_ptr<BaseObject> object,
                                        KAPDeleteProc deleteObject) {
  const KAPUtilsAtoms& atoms = KAPUtilsAtoms::Get();
  return KAPContain(std::move(object), atoms.POSObjectImpl, atoms.POSObjectInterface, deleteObject);
}

}  // namespace NPOSObjectImpl
