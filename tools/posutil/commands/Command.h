#pragma once

#include <string>
#include <vector>

#include "base/Failure.h"
#include "base/Registered.h"
#include "program/Session.h"

namespace CLI {
class App;
}

namespace PosUtil {

// A command of the program. One static object per command.
class Command : public Registered<Command> {
 public:
  Command(int order, const char* name, const char* description)
      : Registered(order), kName(name), kDescription(description) {}

  // Declares options and arguments, and adds what the help says besides.
  virtual void Declare(CLI::App& options) = 0;
  // Sees the arguments of the program, without its name, before they are parsed.
  virtual void Prepare(std::vector<std::string>& /*arguments*/) const {}
  // Does the work. Throws Failure.
  virtual ExitStatus Run(Session& session) = 0;

  const char* const kName;
  const char* const kDescription;

 protected:
  ~Command() = default;
};

}  // namespace PosUtil
