// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace KAPCheck {

// What the tests of a component are about.
struct Target {
  std::string fPath;      // of the library
  std::string fName;      // of the component
  std::string fScenario;  // the path of the plug-in; "" for none
  unsigned long fSeed = 1;
};

}  // namespace KAPCheck
