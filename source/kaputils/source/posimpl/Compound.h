#pragma once

#include "BaseObject.h"

namespace NPOSObjectImpl {

// An object that holds others, and may hold them a million levels deep.
//
// Releasing one runs from the host to the library, which releases what the object holds, to the
// host, and so on, one round for each level. To keep the stack bounded, a round that stands too
// deep in others only files its object in a list, which the outermost round works off before it
// returns. The list runs through the objects: releasing needs no memory.
class Compound : public BaseObject {
 public:
  KAPDeleteProc GetDeleteProc() const noexcept final;

 protected:
  Compound() noexcept = default;

  // Whether the elements of two compounds are equal; an empty one equals only another empty one.
  static bool AreEqual(const CPOSObject& a, const CPOSObject& b);

 private:
  class Releases;

  Compound* fNextToDelete = nullptr;
};

}  // namespace NPOSObjectImpl
