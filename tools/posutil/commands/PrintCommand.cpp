// SPDX-License-Identifier: MIT

#include "commands/Command.h"
#include "commands/documents/DocumentArgument.h"

namespace PosUtil {

namespace {

class PrintCommand final : public Command {
 public:
  PrintCommand() : Command(1, "print", "Prints a document") {}

  void Declare(Options& options) override {
    fDocument.Declare(options);
    fDocument.DeclareAll(options);
    fDocument.DeclareLayout(options);
    DeclareTo(options, fFormat, "Format of the output; default: tree, an outline for people");
    options.Footer(
        "In JSON, {\"$unicode\": \"text\"} is a Unicode string and\n"
        "{\"$binary\": \"type\", \"base64\": \"AAEC\"} is binary data. JSON's true and false "
        "become\n"
        "strings; null becomes an empty slot of an array, or no member of a dictionary; --loss\n"
        "chooses what happens to them. A value that the format cannot hold is an error. With\n"
        "--all, FILE may hold any number of documents, typea or json.\n\n"
        "Examples:\n"
        "  posutil print settings.json\n"
        "  posutil print --to json settings.txt\n"
        "  echo '< name (Ada Lovelace) born 1815 >' | posutil print --from text -");
  }

  ExitStatus Run(Session& session) override {
    fDocument.SetLoss(session);
    fDocument.Write(*FindFormat<Writer>(fFormat), "\n", session.OutStyle(), session, session.Out());
    return kExitSuccess;
  }

 private:
  DocumentArgument fDocument;
  std::string fFormat = "tree";
} gPrintCommand;

}  // namespace

}  // namespace PosUtil
