// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace KAPCheck {

// The symbols that a shared library defines for others, sorted, C++ names as they are stored.
// Versions are not among them. Reads the file without loading it. Throws PosUtil::Failure if the
// file cannot be read or is not a shared library for this machine.
std::vector<std::string> ExportsOf(const std::string& path);

}  // namespace KAPCheck
