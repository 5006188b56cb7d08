// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace PosUtil {

// The line about the version of the program, without a line end.
std::string ProgramVersion();

}  // namespace PosUtil
