#include "BaseObject.h"

#include "KAPUtilsAtoms.h"
#include "ProcessCounter.h"

namespace NPOSObjectImpl {

constinit std::atomic<unsigned int> BaseObject::fNumPOSObjects = 0;

BaseObject::BaseObject() noexcept { AddToProcessCounter(fNumPOSObjects, 1); }

BaseObject::~BaseObject() { AddToProcessCounter(fNumPOSObjects, -1); }

BaseObject* BaseObject::GetInstanceNoThrow(const POSObject* handle) noexcept {
  if (!handle) return nullptr;
  try {
    return static_cast<BaseObject*>(KAP_T_MT::CKAPContainer::GetInstance(
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

POSObject* BaseObject::NewContainer(std::unique_ptr<BaseObject> object) {
  const KAPUtilsAtoms& atoms = KAPUtilsAtoms::Get();
  POSObject* handle = KAP_T_MT::CKAPContainer::NewFullContainer(
      object.get(), atoms.POSObjectImpl, atoms.POSObjectInterface, object->GetDeleteProc());
  object.release();  // the container's now
  return handle;
}

KAPDeleteProc BaseObject::GetDeleteProc() const noexcept {
  return [](void* instance) { delete static_cast<BaseObject*>(instance); };
}

}  // namespace NPOSObjectImpl
