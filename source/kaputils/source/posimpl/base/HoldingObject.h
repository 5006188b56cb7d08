#pragma once

#include "posimpl/base/BaseObject.h"

namespace NPOSObjectImpl {

// An object that holds others, directly or behind a raw pointer, and may hold them a million levels
// deep.
//
// Releasing one runs from the host to the library, which releases what the object holds, to the
// host, and so on, one round for each level. To keep the stack bounded, a round that stands too
// deep in others only files its object in a list, which the outermost round works off before it
// returns. The list runs through the objects: releasing needs no memory.
class HoldingObject : public BaseObject {
 protected:
  HoldingObject() noexcept = default;

  template <class Kind>
  static void Delete(void* instance) noexcept {
    DeleteOrFile(static_cast<HoldingObject*>(static_cast<BaseObject*>(instance)));
  }

  // The clone of what is held, and whether two things held are equal: by the object's own
  // procedures, which are not needed where an object of ours answers without nesting. Nothing is its
  // own clone and equals only nothing.
  static CPOSObject CloneOf(const CPOSObject& held);
  static bool AreEqual(const CPOSObject& a, const CPOSObject& b);

 private:
  class Releases;

  static void DeleteOrFile(HoldingObject* object) noexcept;

  HoldingObject* fNextToDelete = nullptr;
};

}  // namespace NPOSObjectImpl
