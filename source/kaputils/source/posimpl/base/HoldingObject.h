// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/base/BaseObject.h"
#include "posimpl/base/Walk.h"

namespace NPOSObjectImpl {

// An object that holds others, directly or through a raw pointer, and may hold them a million
// levels deep.
//
// Releasing one runs from the host to the library, which releases what the object holds, to the
// host, and so on, one nested release for each level. To keep the stack bounded, a release that is
// nested too deep defers the deletion of its object: it appends the object to a list. The outermost
// release deletes the deferred objects before it returns. The list runs through the objects:
// releasing needs no memory.
//
// Other components may release objects during a release: a release procedure, the deletion of an
// object of theirs, an instance that they added to a container of ours. Their code relies on the
// object being destroyed when "Release" returns. So any release that our destructors do not
// announce (ReleaseOfHeld) counts as an outermost one, with a depth and a list of its own. Nested
// code of other components therefore takes stack. Only where the stack ends are its objects
// deferred to a release outside.
class HoldingObject : public BaseObject {
 protected:
  HoldingObject() noexcept = default;

  template <class Kind>
  static void Delete(void* instance) noexcept {
    DeleteOrDefer(static_cast<HoldingObject*>(static_cast<BaseObject*>(instance)));
  }

  // A destructor's way to release what its object holds: Expect, then the release, for each. Only
  // releases that are announced in this way may be deferred.
  class ReleaseOfHeld {
   public:
    ReleaseOfHeld() noexcept : fNext(NextOnThisThread()), fOwnName(OwnName()) {}
    ReleaseOfHeld(const ReleaseOfHeld&) = delete;
    ReleaseOfHeld& operator=(const ReleaseOfHeld&) = delete;
    ~ReleaseOfHeld() { fNext = nullptr; }

    void Expect(const POSObject* held) noexcept {
      // Without the atoms the host is gone, and perhaps the held objects too.
      fNext = held && fOwnName ? static_cast<const BaseObject*>(
                                     KAP_T_MT::CKAPContainer::PrimaryInstance(held, fOwnName))
                               : nullptr;
    }

   private:
    static const BaseObject*& NextOnThisThread() noexcept;
    static const char* OwnName() noexcept {
      const KAPUtilsAtoms* const atoms = KAPUtilsAtoms::Find();
      return atoms ? atoms->POSObjectImpl.Text() : nullptr;
    }

    const BaseObject*& fNext;
    const char* const fOwnName;  // what marks objects of ours
  };

  // Calls the release procedure of a raw pointer.
  static void CallReleaseProc(KAP_T_MT::POSReleaseProc release, void* pointer) noexcept;

  // The clone of what is held, as a new reference, and whether two things held are equal. Null
  // clones to null and equals only null. An object of ours is asked directly, so that a failure at
  // the bottom of a thousand levels is thrown through them and reported once; any other one through
  // its own procedures, by a walk that keeps.
  [[gnu::always_inline]] static POSObject* CloneOf(POSObject* held, Walk& walk) {
    BaseObject* const own = walk.Unkept(held);
    if (!own) [[unlikely]]
      return CloneKept(held, walk);
    return CloneOwn(*own, held, walk);
  }
  static bool AreEqual(POSObject* a, POSObject* b, Walk& walk) {
    const BaseObject* own = walk.Unkept(a);
    const BaseObject* other = walk.Unkept(b);
    if (!own || !other) [[unlikely]]
      return AreEqualKept(a, b, walk);
    return own->IsEqual(*other, walk);
  }

 private:
  class Releases;

  [[gnu::always_inline]] static POSObject* CloneOwn(BaseObject& own, POSObject* held, Walk& walk) {
    BaseObject* const clone = own.Clone(walk);
    if (clone == &own) return AddRef(held);
    return clone ? Contain(std::unique_ptr<BaseObject>(clone)) : nullptr;
  }
  [[gnu::noinline]] static POSObject* CloneKept(POSObject* held, Walk& walk);
  [[gnu::noinline]] static bool AreEqualKept(POSObject* a, POSObject* b, Walk& walk);
  static void DeleteOrDefer(HoldingObject* object) noexcept;

  HoldingObject* fNextToDelete = nullptr;
};

}  // namespace NPOSObjectImpl
