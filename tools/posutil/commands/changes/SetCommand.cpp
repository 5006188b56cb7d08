// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include "base/Printable.h"
#include "commands/Command.h"
#include "commands/changes/ChangedDocument.h"
#include "commands/changes/ValueArgument.h"
#include "commands/declarations/LiteralArguments.h"
#include "commands/values/Slot.h"

namespace PosUtil {

namespace {

class SetCommand final : public Command {
 public:
  SetCommand() : Command(5, "set", "Sets a value of a document") {}

  void Declare(Options& options) override {
    fDocument.Declare(options);
    options.Argument("PATH", fPath, "Where to put the value, as in a.b[2].c or /a/b/2/c");
    fValue.Declare(options);
    options.Footer(
        "Writes the document with the value at PATH, in the format and layout that it has. Makes\n"
        "the dictionaries and arrays that are missing on the way. The index after the last one,\n"
        "or - in a JSON Pointer, extends an array. With --in-place, nothing may be lost:\n"
        "--loss=error is the default then. Exit status 1 if PATH leads through a value that is\n"
        "not a container, or past the end of an array; nothing is written then.\n\n"
        "Examples:\n"
        "  posutil set settings.json window.size '[800, 600]'\n"
        "  posutil set --in-place=.bak settings.txt title --string 'Main window'");
  }

  void Prepare(std::vector<std::string>& arguments) const override {
    ChangedDocument::Prepare(arguments);
    HideNegativeNumbers(arguments);
  }

  ExitStatus Run(Session& session) override {
    fDocument.Begin(session);
    const Path path(fPath);
    RequireWellFormed(path);
    Change value = fValue.Read(session);
    fDocument.Run(session, [&](KAP_T_MT::CPOSObject& document, const std::string& name) {
      try {
        Slot slot(document, path, session.Loss(), Slot::Use::kMake);
        value.Put(slot, value.Object(), {});
      } catch (const PathError& error) {
        throw Failure(Printable(name) + ": no place for a value at \"" + Printable(path.Text()) +
                          "\": " + error.what(),
                      kExitNegative);
      }
      value.ReportLosses();
    });
    return kExitSuccess;
  }

 private:
  ChangedDocument fDocument;
  std::string fPath;
  ValueArgument fValue;
} gSetCommand;

}  // namespace

}  // namespace PosUtil
