#pragma once

#include "posimpl/base/BaseObject.h"

namespace NPOSObjectImpl {

// An object that holds others, directly or through a raw pointer, and may hold them a million
// levels deep.
//
// Releasing one runs from the host to the library, which releases what the object holds, to the
// host, and so on, one round for each level. To keep the stack bounded, a round that is nested too
// deep in others only files its object in a list, which the outermost round works off before it
// returns. The list runs through the objects: releasing needs no memory.
//
// A release procedure of another component may release objects too, and relies on their being gone
// when "Release" returns. So its rounds do not count with those around it: they have an outermost
// round and a list of their own. Nested release procedures therefore take stack; only where that
// ends are their objects filed for a round outside of them.
class HoldingObject : public BaseObject {
 protected:
  HoldingObject() noexcept = default;

  template <class Kind>
  static void Delete(void* instance) noexcept {
    DeleteOrFile(static_cast<HoldingObject*>(static_cast<BaseObject*>(instance)));
  }

  // Calls the release procedure of a raw pointer.
  static void CallReleaseProc(KAP_T_MT::POSReleaseProc release, void* pointer) noexcept;

  // The clone of what is held, and whether two things held are equal. Null clones to null and
  // equals only null. An object of ours is asked directly, so that a failure at the bottom of a
  // thousand levels is thrown through them and reported once; any other one through its own
  // procedures.
  static CPOSObject CloneOf(const CPOSObject& held);
  static bool AreEqual(const CPOSObject& a, const CPOSObject& b);

 private:
  class Releases;

  static void DeleteOrFile(HoldingObject* object) noexcept;

  HoldingObject* fNextToDelete = nullptr;
};

}  // namespace NPOSObjectImpl
