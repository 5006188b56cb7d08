// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "kap/KAPContainer.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPStringAtom.h"
#include "pos/POSException.h"
#include "pos/POSInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The method tables of all implementations of property objects, deleted when the runtime is
// unbound. They hold no objects: each reference releases its own, a no-op once the runtime is
// unbound. A wrapper looks its table up at each call instead of keeping it: the look-up costs a few
// loads, an element of an array is then a bare handle, and an object that outlives a binding holds
// nothing of it.
class CPOSObjectTerminate : public TDelVTabList<POSObjectInterface> {};

// A reference to a property object of any kind and of any component, or an empty reference.
//
//   const CPOSObject value = dict["size"];
//   if (const CPOSNumber number(value, true); number) return number.Get();
//   return value.Clone();
//
// Ownership: holds one reference, released on destruction; copies share the same object.
// Errors: CKAPError "invalid container" when a handle is null or has no property-object methods and
//   when the host does not add a reference, and for an empty reference asked for what all kinds
//   share; "couldn't get signature" for a container without a primary instance. An empty reference
//   of one kind asked for what its kind has acts as a null handle: a report, and null or 0.
// Threads: a reference is a plain value. For the object see the thread tags in POSInterfaces.h.
class CPOSObject : public KAPContainerBaseGeneric {
 public:
  CPOSObject() noexcept = default;
  // Adds a reference to what must be a property object.
  explicit CPOSObject(POSObject* handle);
  // Adopts the reference of a handle that a procedure of property objects returned.
  CPOSObject(POSObject* handle, KAPAdopt adopt);
  explicit CPOSObject(TKAPNewHandle<POSObject> made) : CPOSObject(std::move(made), KAPAdopt()) {}

  // The object that `text` describes, see "CreateFromText" of POSObjectStatics; an empty
  // reference on failure. `end` may be null.
  [[nodiscard]] static CPOSObject CreateFromText(const char* text, const char** end);

  // A copy that can change without the original; the same object for a scalar, which never changes.
  // POSException "CPOSObject::Clone failed", with a report.
  [[nodiscard]] CPOSObject Clone() const;
  // Whether both have the same kind and the same content. A dictionary equals one that holds more
  // than it does, deliberately. False when `other` is empty.
  [[nodiscard]] bool IsEqual(const CPOSObject& other) const;
  // A POSType; another component may return any number.
  int GetType() const;

 private:
  static constinit CPOSObjectTerminate fTerm;
};

// The atom of a text that a caller passed as a key, a path or the name of a type. POSException
// "a key, path or type name is null": without it, a null text would look like exhausted memory.
CKAPStringAtom POSAtomOf(const char* text);

}  // namespace KAP_T_MT
