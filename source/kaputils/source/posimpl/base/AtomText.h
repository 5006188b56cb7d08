#pragma once

#include "kap/KAPStringAtom.h"
#include "kapimpl/Required.h"

namespace NPOSObjectImpl {

// The text of an atom. Equal texts are one: they are compared as pointers.
using AtomText = const char*;

// The text of an atom that is borrowed for the call; POSException when there is none.
inline AtomText TextOf(KAPStringAtom* atom) {
  return Required(KAP_T_MT::KAPStringClient::Call<"GetCString">(Required(atom)));
}

}  // namespace NPOSObjectImpl
