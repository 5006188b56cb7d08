// SPDX-License-Identifier: MIT
#include <string>

#include "commands/Command.h"
#include "program/Version.h"

namespace PosUtil {

namespace {

// The version as text; the number has a byte for each part.
std::string Decoded(int version) {
  return std::to_string(version >> 16) + "." + std::to_string(version >> 8 & 0xFF) + "." +
         std::to_string(version & 0xFF);
}

class VersionCommand final : public Command {
 public:
  VersionCommand() : Command(90, "version", "Prints the versions of the program and the library") {}

  void Declare(Options& options) override { options.Footer("Example:\n  posutil version"); }

  ExitStatus Run(Session& session) override {
    const Library& library = session.TheLibrary();
    const int version = library.Version();
    session.Out().Put(ProgramVersion() + "\nKAPUtils " + Decoded(version) + " (" +
                      std::to_string(version) + "), " + library.Path() + "\n");
    return kExitSuccess;
  }
} gVersionCommand;

}  // namespace

}  // namespace PosUtil
