// SPDX-License-Identifier: MIT
#include "pos/POSObject.h"

#include "kap/KAPMemory.h"

namespace KAP_T_MT {

constinit CPOSObjectTerminate CPOSObject::fTerm;

CPOSObject::CPOSObject(POSObject* handle) : KAPContainerBaseGeneric(handle) {
  fTerm.InitVTab(handle);
}

CPOSObject::CPOSObject(POSObject* handle, KAPAdopt adopt) : KAPContainerBaseGeneric(handle, adopt) {
  if (!handle) CKAPContainer::ThrowInvalidContainerException();
}

CPOSObject CPOSObject::CreateFromText(const char* text, const char** end) {
  POSObject* handle = TKAPInterfaceClient<POSObjectStatics>::Call<"CreateFromText">(text, end);
  return handle ? CPOSObject(handle, KAPAdopt()) : CPOSObject();
}

CPOSObject CPOSObject::CreateFromText(std::string_view text, const char** end) {
  const KAPTerminatedText copy(text);
  const char* stopped = nullptr;
  CPOSObject object = CreateFromText(copy.Text(), &stopped);
  if (end) *end = stopped ? text.data() + (stopped - copy.Text()) : nullptr;
  return object;
}

CPOSObject CPOSObject::Clone() const {
  POSObject* clone = fTerm.Method<"Clone">(Handle())(Handle());
  if (!clone) throw POSException("CPOSObject::Clone failed");
  // The very handle that was given comes back without a reference of its own.
  return clone == Handle() ? *this : CPOSObject(clone, KAPAdopt());
}

bool CPOSObject::IsEqual(const CPOSObject& other) const {
  return fTerm.Method<"IsEqual">(Handle())(Handle(), other.Handle());
}

CKAPStringAtom POSAtomOf(const char* text) {
  if (!text) throw POSException("a key, path or type name is null");
  return CKAPStringAtom(text);
}

int CPOSObject::GetType() const { return fTerm.Method<"GetType">(Handle())(Handle()); }

}  // namespace KAP_T_MT
