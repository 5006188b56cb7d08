// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "component/Target.h"
#include "report/Results.h"

namespace KAPCheck {

// The name of the component in a library called libNAME.so; "" for another file name.
std::string NameFromFile(const std::string& path);
// Whether entry points can start with it.
bool IsComponentName(const std::string& name);

// Runs the tests of these names, or all if there are none, each in a process of its own. A test
// that needs another one to pass does not run when that one fails; the results then have the other
// one as well. Throws PosUtil::Failure if a name is not that of a test, if a file is not a library,
// or if a plug-in exports nothing for kapcheck.
Results CheckComponent(const Target& target, const std::vector<std::string>& names,
                       std::chrono::milliseconds limit);

// All tests, none of which has run.
Results ListedTests();

// Runs one test in this process, which is the test's own, and sends the verdict. Does not return.
[[noreturn]] void RunComponentTest(const std::string& name, const Target& target);

}  // namespace KAPCheck
