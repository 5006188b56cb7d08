// SPDX-License-Identifier: MIT
#pragma once

#include "checks/ThreadTag.h"

namespace KAPHost {

// kAny for a method that is not in the list: interfaces that other components declare.
ThreadTag ThreadTagOf(const char* interfaceName, const char* methodName) noexcept;

}  // namespace KAPHost
