// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>

#include "kapcheck/Scenario.h"

namespace KAPCheck {

// The plug-in that the user gives (kapcheck/Scenario.h). It stays loaded until the process ends.
class ScenarioPlugin {
 public:
  // Throws TestFailure when the plug-in cannot be loaded or declares no method.
  explicit ScenarioPlugin(const std::string& path);

  // Whether it has a scenario.
  bool CanRun() const { return fRun; }

  // Whether all of the scenario succeeded. Throws TestFailure when an exception leaves it.
  bool Run(KAPGetProcAddressProc getProcAddress) const;
  // An address in the code of the plug-in, if it has a scenario.
  const void* Code() const { return reinterpret_cast<const void*>(fRun); }
  // Whether a declared method may throw.
  bool MayThrow() const;
  // The declared methods; none if the plug-in declares no interface.
  std::span<const DeclaredMethod> Declarations() const { return fDeclarations; }

 private:
  int (*fRun)(KAPGetProcAddressProc) = nullptr;
  std::span<const DeclaredMethod> fDeclarations;
};

}  // namespace KAPCheck
