#include "pos/POSObject.h"

namespace KAP_T_MT {

namespace {

CPOSObjectTerminate gMethodTables;

using Statics = TKAPInterfaceClient<POSObjectStatics>;

}  // namespace

const KAPVTabGeneric::Slot* CPOSObjectTerminate::InitVTab(const CPOSObject* object) {
  if (object->IsNull()) CKAPContainer::ThrowInvalidContainerException();
  const KAPVTabGeneric::Slot* methods = gMethodTables.Get(object->Handle());
  if (!methods) CKAPContainer::ThrowInvalidContainerException();
  return methods;
}

CPOSObject::CPOSObject(POSObject* handle) : KAPContainerBaseGeneric(handle) {
  CPOSObjectTerminate::InitVTab(this);
}

CPOSObject::CPOSObject(POSObject* handle, KAPAdopt adopt) : KAPContainerBaseGeneric(handle, adopt) {
  if (!handle) CKAPContainer::ThrowInvalidContainerException();
}

// A slot may become empty when another thread finds that the interface has gone.
template <TKAPName Method, class... Args>
auto CPOSObject::CallMethod(Args... args) const {
  const KAPVTabGeneric::Slot& slot =
      CPOSObjectTerminate::InitVTab(this)[POSObjectInterface::kSlot<Method>];
  void* method = slot.load(std::memory_order_relaxed);
  if (!method) CKAPContainer::ThrowInvalidContainerException();
  return reinterpret_cast<POSObjectInterface::Proc<Method>>(method)(Handle(), args...);
}

CPOSObject CPOSObject::CreateFromText(const char* text, const char** end) {
  POSObject* handle = Statics::Call<"CreateFromText">(text, end);
  return handle ? CPOSObject(handle, KAPAdopt()) : CPOSObject();
}

CPOSObject CPOSObject::Clone() const {
  POSObject* clone = CallMethod<"Clone">();
  if (!clone) throw POSException("CPOSObject::Clone failed");
  // The very handle that was given comes back without a reference of its own.
  return clone == Handle() ? *this : CPOSObject(clone, KAPAdopt());
}

bool CPOSObject::IsEqual(const CPOSObject& other) const {
  return CallMethod<"IsEqual">(other.Handle());
}

int CPOSObject::GetType() const { return CallMethod<"GetType">(); }

}  // namespace KAP_T_MT
