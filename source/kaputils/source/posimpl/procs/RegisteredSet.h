// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPBinder.h"

namespace NPOSObjectImpl {

// Registers one interface; specialised beside its procedures. An interface of a set without a
// specialisation does not compile.
template <class Interface>
bool RegisterProcs() = delete;

// Registers the interfaces of a TKAPInterfaceSet in its order. Returns false at the first
// registration that fails; those before it stay registered.
template <class Set>
bool RegisterSet() {
  bool registered = true;
  Set::ForEach([&]<class Interface>() { registered = registered && RegisterProcs<Interface>(); });
  return registered;
}

template <class Set>
void UnregisterSet() {
  Set::ForEach([]<class Interface>() { KAP_T_MT::KAPUnregisterInterface(Interface::kName); });
}

}  // namespace NPOSObjectImpl
