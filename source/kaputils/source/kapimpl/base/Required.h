#pragma once

#include "pos/POSException.h"

// The argument; POSException when it is null.
template <class T>
T* Required(T* argument) {
  if (!argument) [[unlikely]]
    throw KAP_T_MT::POSException("a null pointer was given where a value is needed");
  return argument;
}
