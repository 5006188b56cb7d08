// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "commands/declarations/Declarations.h"

namespace PosUtil {

// Scripts that complete the arguments of posutil in a shell: commands, options and values of
// options. Where a file may stand, the shell completes names of files.
std::string BashCompletion(const Declarations& declarations);
std::string ZshCompletion(const Declarations& declarations);
std::string FishCompletion(const Declarations& declarations);

}  // namespace PosUtil
