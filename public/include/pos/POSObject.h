#pragma once

#include "kap/KAPContainer.h"
#include "kap/KAPMethodTable.h"
#include "pos/POSException.h"
#include "pos/POSInterfaces.h"

namespace KAP_T_MT {

// A reference to a property object of any kind and of any component, or an empty one.
// Ownership: holds one reference, released on destruction; copies share the same object.
// Errors: CKAPError "invalid container" when a handle offers no property-object methods or the host
// refuses a reference,
//   and when an empty object is asked anything.
// Threads: as a plain value; see POSInterfaces.h for the object behind it.
class CPOSObject : public KAPContainerBaseGeneric {
 public:
  CPOSObject() noexcept = default;
  explicit CPOSObject(POSObject* handle);  // adds a reference
  CPOSObject(POSObject* handle,
             KAPAdopt);  // the reference passes over, and is released when this raises

  // The object written in `text`, as "CreateFromText" of POSObjectStatics; empty on failure.
  static CPOSObject CreateFromText(const char* text, const char** end);

  // POSException "CPOSObject::Clone failed" when the object cannot be cloned.
  CPOSObject Clone() const;
  bool IsEqual(const CPOSObject& other) const;
  int GetType() const;  // a POSType

 private:
  friend class CPOSObjectTerminate;

  template <TKAPName Method>
  POSObjectInterface::Proc<Method> Procedure() const {
    void* proc = fMethods
                     ? fMethods[POSObjectInterface::kSlot<Method>].load(std::memory_order_relaxed)
                     : nullptr;
    if (!proc) CKAPContainer::ThrowInvalidContainerException();
    return reinterpret_cast<POSObjectInterface::Proc<Method>>(proc);
  }

  const KAPVTabGeneric::Slot* fMethods = nullptr;
};

// The method tables of all implementations of property objects, emptied when the runtime unbinds
// itself.
class CPOSObjectTerminate : public TDelVTabList<POSObjectInterface> {
 public:
  // Gives the wrapper its methods; CKAPError "invalid container" when its container offers none.
  static void InitVTab(CPOSObject* object);
};

}  // namespace KAP_T_MT
