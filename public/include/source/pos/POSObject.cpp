#include "pos/POSObject.h"

namespace KAP_T_MT {

namespace {

CPOSObjectTerminate gMethodTables;

using Statics = TKAPInterfaceClient<POSObjectStatics>;

}  // namespace

void CPOSObjectTerminate::InitVTab(CPOSObject* object) {
  object->fMethods = gMethodTables.Get(object->Handle());
  if (!object->fMethods) CKAPContainer::ThrowInvalidContainerException();
}

CPOSObject::CPOSObject(POSObject* handle) : KAPContainerBaseGeneric(handle) {
  CPOSObjectTerminate::InitVTab(this);
}

CPOSObject::CPOSObject(POSObject* handle, KAPAdopt adopt) : KAPContainerBaseGeneric(handle, adopt) {
  if (!handle) CKAPContainer::ThrowInvalidContainerException();
  CPOSObjectTerminate::InitVTab(this);
}

CPOSObject CPOSObject::CreateFromText(const char* text, const char** end) {
  POSObject* handle = Statics::Call<"CreateFromText">(text, end);
  return handle ? CPOSObject(handle, KAPAdopt()) : CPOSObject();
}

CPOSObject CPOSObject::Clone() const {
  POSObject* clone = Procedure<"Clone">()(Handle());
  if (!clone) throw POSException("CPOSObject::Clone failed");
  // The very handle that was given comes back without a reference of its own.
  return clone == Handle() ? *this : CPOSObject(clone, KAPAdopt());
}

bool CPOSObject::IsEqual(const CPOSObject& other) const {
  return Procedure<"IsEqual">()(Handle(), other.Handle());
}

int CPOSObject::GetType() const { return Procedure<"GetType">()(Handle()); }

}  // namespace KAP_T_MT
