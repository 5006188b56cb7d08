// SPDX-License-Identifier: MIT
#include <string>

#include "commands/Command.h"
#include "commands/documents/DocumentArgument.h"
#include "formats/paths/PathLines.h"

namespace PosUtil {

namespace {

class PathsCommand final : public Command {
 public:
  PathsCommand() : Command(3, "paths", "Prints a line for each value, with its path") {}

  void Declare(Options& options) override {
    fDocument.Declare(options);
    fDocument.DeclareAll(options);
    options.Flag("--pointer", fAsPointers, "Prints the paths as JSON Pointers");
    options.Footer(
        "Prints PATH = VALUE for every number, string, binary data, empty slot and empty\n"
        "container, in the order of keys and indices. VALUE is JSON; get, set and remove take\n"
        "PATH. A key that a path cannot name, such as a.b, makes the path a JSON Pointer. With\n"
        "--all, the number of the document and a colon start the line. Values\n"
        "that property objects do not have appear as they are: --loss=keep is the default.\n\n"
        "Examples:\n"
        "  posutil paths settings.json | grep size\n"
        "  posutil paths --pointer settings.txt");
  }

  ExitStatus Run(Session& session) override {
    fDocument.SetLoss(session, LossMode::kKeep);
    const auto documents = fDocument.Open(session.Out(), session);
    PathLines::Options options = {.fAsPointers = fAsPointers,
                                  .fRestoresKept = session.Loss() == LossMode::kKeep,
                                  .fStyle = session.OutStyle()};
    const auto print = [&](const KAP_T_MT::CPOSObject& object, std::size_t number) {
      const std::string margin = std::to_string(number) + ": ";
      if (fDocument.ReadsAll()) options.fMargin = margin;
      PathLines lines(options, {}, session.Out());
      Visit(object, fDocument.Name(number), lines);
      session.TheLibrary().CheckReports(fDocument.Name(number));
    };
    fDocument.ForEach(*documents, session.Out(), session, print);
    return kExitSuccess;
  }

 private:
  DocumentArgument fDocument;
  bool fAsPointers = false;
} gPathsCommand;

}  // namespace

}  // namespace PosUtil
