// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "base/Failure.h"
#include "base/Registered.h"
#include "commands/declarations/Options.h"
#include "program/Session.h"

namespace PosUtil {

// A command of the program. Each command has one static object.
class Command : public Registered<Command> {
 public:
  Command(int order, const char* name, const char* description)
      : Registered(order), kName(name), kDescription(description) {}

  // Declares the options and arguments, and the rest of the help text.
  virtual void Declare(Options& options) = 0;
  // May change the arguments of the program before the parser sees them. The program's name is not
  // among them.
  virtual void Prepare(std::vector<std::string>& /*arguments*/) const {}
  // Returns whether it uses the declarations of the other commands.
  virtual bool DescribesAll() const { return false; }
  // Runs the command. Throws Failure.
  virtual ExitStatus Run(Session& session) = 0;

  const char* const kName;
  const char* const kDescription;

 protected:
  ~Command() = default;
};

}  // namespace PosUtil
