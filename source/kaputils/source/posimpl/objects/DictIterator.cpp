// SPDX-License-Identifier: MIT
#include "posimpl/objects/DictIterator.h"

#include "kapimpl/base/ContainedObject.h"
#include "kapimpl/base/KAPUtilsAtoms.h"

namespace NPOSObjectImpl {

POSDictIterator* DictIterator::NewContainer(const Dict& dict) {
  const KAPUtilsAtoms& atoms = KAPUtilsAtoms::Get();
  return KAPContain(std::make_unique<DictIterator>(dict), atoms.POSDictIteratorImpl,
                    atoms.POSDictIteratorInterface,
                    [](void* instance) { delete static_cast<DictIterator*>(instance); });
}

// No other object has this instance name, so the type need not be checked.
DictIterator& DictIterator::GetInstance(POSDictIterator* handle) {
  void* instance = KAPFindInstance(handle, KAPUtilsAtoms::Get().POSDictIteratorImpl);
  if (!instance) throw POSException("instance was not an POSDictIterator");
  return *static_cast<DictIterator*>(instance);
}

const char* DictIterator::CurKey() const {
  if (!fCurrent) throw POSException("POSDictIterator is done");
  return fCurrent->GetKey().Text();
}

}  // namespace NPOSObjectImpl
