// SPDX-License-Identifier: MIT
#pragma once

#include "pos/POSException.h"

// Returns the argument of a procedure; POSException when it is null. Every pointer that crosses the
// binder and is needed passes through here.
template <class T>
T* Required(T* argument) {
  if (!argument) [[unlikely]]
    throw KAP_T_MT::POSException("a null pointer was given where a value is needed");
  return argument;
}
