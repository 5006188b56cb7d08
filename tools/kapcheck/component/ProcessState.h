// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>

namespace KAPCheck {

// What a library may change in its process and should not leave changed, in words, by what it is:
// open files, the working folder, the locale, signal handlers, blocked signals, the mask for new
// files, environment variables.
using ProcessState = std::map<std::string, std::string>;

ProcessState TakeProcessState();
ProcessState WithoutFiles(ProcessState state);

// What is different, such as "file 5: \"\" became \"/tmp/x\""; "" for nothing.
std::string Difference(const ProcessState& before, const ProcessState& after);

}  // namespace KAPCheck
