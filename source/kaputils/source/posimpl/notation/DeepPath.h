// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/objects/Dict.h"

namespace NPOSObjectImpl {

// The value that the path leads to in the dictionary. When it leads nowhere, which includes that
// the host fails on the way: an empty object if `noThrow`, else POSException "Dict::DeepGet lookup
// failed".
CPOSObject DeepGet(const Dict& dict, const char* path, bool noThrow);

}  // namespace NPOSObjectImpl
