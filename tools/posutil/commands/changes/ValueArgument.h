// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "commands/changes/Change.h"
#include "commands/declarations/Options.h"

namespace PosUtil {

// The argument VALUE: JSON, or what an option says.
class ValueArgument {
 public:
  // Declares VALUE and its options.
  void Declare(Options& options);
  // Throws Failure; with kExitUsage if VALUE has not the form that it must have.
  Change Read(Session& session) const;

 private:
  KAP_T_MT::CPOSObject Object(const std::string& text) const;

  std::string fText;
  bool fIsString = false;
  bool fIsUnicode = false;
  bool fIsNumber = false;
  bool fIsNotation = false;
};

}  // namespace PosUtil
