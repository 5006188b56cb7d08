// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>

#include "kapcheck/Scenario.h"

namespace KAPCheck {

// The plug-in that the user gives (kapcheck/Scenario.h). It stays loaded until the process ends.
class ScenarioPlugin {
 public:
  // Throws PosUtil::Failure when the plug-in cannot be loaded or has no scenario.
  explicit ScenarioPlugin(const std::string& path);

  // Whether all of the scenario succeeded. Throws TestFailure when an exception leaves it.
  bool Run(KAPGetProcAddressProc getProcAddress) const;
  // The declared methods; none if the plug-in declares no interface.
  std::span<const DeclaredMethod> Declarations() const { return fDeclarations; }

 private:
  int (*fRun)(KAPGetProcAddressProc) = nullptr;
  std::span<const DeclaredMethod> fDeclarations;
};

}  // namespace KAPCheck
