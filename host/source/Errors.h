#pragma once

#include "kap/KAPTypes.h"

namespace KAPHost {

// An error of the host's own making, for the caller; the memory error when there is no memory for
// it.
KAPError* MakeError(const char* message) noexcept;

// Core error 1.
KAPError* MemoryError() noexcept;

}  // namespace KAPHost
