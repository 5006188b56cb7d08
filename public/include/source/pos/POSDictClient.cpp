// SPDX-License-Identifier: MIT
#include "POSDict.h"

namespace KAP_T_MT {

namespace {

CPOSObject Found(POSObject* value, POSNoThrow noThrow, const char* message) {
  if (value) return CPOSObject(value, KAPAdopt());
  if (!noThrow) throw POSException(message);
  return {};
}

}  // namespace

CPOSObject CPOSDict::Get(const CKAPStringAtom& key, POSNoThrow noThrow) const {
  return Found(Call<"Get">(Handle(), key.Handle()), noThrow, "CPOSDict::Get failed");
}

// The array's message is deliberate.
CPOSObject CPOSDict::DeepGet(const CKAPStringAtom& path, POSNoThrow noThrow) const {
  return Found(Call<"DeepGet">(Handle(), path.Handle()), noThrow,
               "CPOSArray::GetAt subscript failed");
}

// The reference that the value came with is deliberately not released.
bool CPOSDict::HasKey(const CKAPStringAtom& key) const {
  return Call<"Get">(Handle(), key.Handle()) != nullptr;
}

bool CPOSDict::DeepHasKey(const CKAPStringAtom& path) const {
  return Call<"DeepGet">(Handle(), path.Handle()) != nullptr;
}

void CPOSDict::Put(const CKAPStringAtom& key, const CPOSObject& object) {
  Call<"Put">(Handle(), key.Handle(), object.Handle());
}

void CPOSDict::PutOrThrow(const CKAPStringAtom& key, const CPOSObject& object) {
  Put(key, object);
  if (object.IsNull() || Get(key, true).Handle() != object.Handle()) {
    throw POSException("CPOSDict::Put failed");
  }
}

void CPOSDict::Remove(const CKAPStringAtom& key) { Call<"Remove">(Handle(), key.Handle()); }

unsigned int CPOSDict::NumKeys() const {
  CPOSDictIterator iterator(*this);
  unsigned int count = 0;
  for (iterator.Begin(); !iterator.IsDone(); iterator.Next()) ++count;
  return count;
}

CPOSRawPointer CPOSDict::AsKAPObjRef(const CPOSObject& object, POSNoThrow noThrow) {
  CPOSRawPointer reference(object, true);
  if (reference.IsNull() && !noThrow) {
    throw POSException("downcast from CPOSObject to CPOSKAPObjRef failed");
  }
  return reference;
}

CPOSDictIterator::CPOSDictIterator(const CPOSDict& dict)
    : fIterator(Client::Call<"NewPOSDictIterator">(dict.Handle()), KAPAdopt()) {
  if (fIterator.IsNull()) CKAPContainer::ThrowInvalidContainerException();
}

}  // namespace KAP_T_MT
