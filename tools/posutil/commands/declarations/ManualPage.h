// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "commands/declarations/Declarations.h"

namespace PosUtil {

// The manual page, in the language of man.
std::string ManualPage(const Declarations& declarations);

}  // namespace PosUtil
