// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPTypes.h"

namespace KAPHost {

// The errors that a guarded procedure returns in place of running its body. Defined with the
// errors, which register procedures of their own and so stand above this layer.
KAPError* InvalidArgument() noexcept;
// Core error 1.
KAPError* MemoryError() noexcept;

}  // namespace KAPHost
