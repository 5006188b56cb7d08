#pragma once

#include "pos/POSObject.h"

namespace NPOSObjectImpl {

// A new, empty container, and the object behind it, to be filled without crossing the boundary for
// each value.
template <class Kind>
struct Made {
  Made()
      : fObject(Kind::NewContainer(), KAP_T_MT::KAPAdopt()),
        fInstance(Kind::GetInstance(fObject.Handle())) {}

  KAP_T_MT::CPOSObject fObject;
  Kind& fInstance;
};

}  // namespace NPOSObjectImpl
