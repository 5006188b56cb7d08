#pragma once

#include "kap/KAPContainer.h"
#include "kap/KAPMethodTable.h"
#include "pos/POSException.h"
#include "pos/POSInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The method tables of all implementations of property objects, emptied when the runtime unbinds
// itself. A wrapper asks for its table at each call instead of keeping it: the answer costs a few
// loads, an object in an array is a bare handle, and one that outlives a binding holds nothing of
// it.
class CPOSObjectTerminate : public TDelVTabList<POSObjectInterface> {};

// A reference to a property object of any kind and of any component, or an empty one.
// Ownership: holds one reference, released on destruction; copies share the same object.
// Errors: CKAPError "invalid container" when a handle offers no property-object methods, when the
//   host refuses a reference, and when an empty object is asked for what all kinds share. An empty
//   object of a kind asked for what its kind has acts as a null handle: a report, and null or 0.
// Threads: as a plain value; see POSInterfaces.h for the object behind it.
class CPOSObject : public KAPContainerBaseGeneric {
 public:
  CPOSObject() noexcept = default;
  // Adds a reference to what must be a property object.
  explicit CPOSObject(POSObject* handle);
  // The reference of a handle that a procedure of property objects returned passes over.
  CPOSObject(POSObject* handle, KAPAdopt adopt);

  // The object written in `text`, as "CreateFromText" of POSObjectStatics; empty on failure.
  static CPOSObject CreateFromText(const char* text, const char** end);

  // POSException "CPOSObject::Clone failed" when the object cannot be cloned.
  CPOSObject Clone() const;
  bool IsEqual(const CPOSObject& other) const;
  int GetType() const;  // a POSType

 private:
  static constinit CPOSObjectTerminate fTerm;
};

}  // namespace KAP_T_MT
