#include <CLI/CLI.hpp>

#include "commands/Command.h"
#include "commands/documents/WriteDocuments.h"

namespace PosUtil {

namespace {

class PrintCommand final : public Command {
 public:
  PrintCommand() : Command(1, "print", "Prints a document") {}

  void Declare(CLI::App& options) override {
    fDocument.Declare(options);
    fDocument.DeclareAll(options);
    DeclareTo(options, fFormat, "Format of the output; else tree, an outline for reading");
    options.footer(
        "In JSON, a Unicode string is {\"$unicode\": \"text\"}, binary data\n"
        "{\"$binary\": \"type\", \"base64\": \"AAEC\"}; true and false are read as strings, null "
        "as\n"
        "an empty slot of an array or as an absent member. What a format cannot hold is an\n"
        "error.\n\n"
        "Examples:\n"
        "  posutil print settings.json\n"
        "  posutil print --to json settings.txt\n"
        "  echo '< name (Ada Lovelace) born 1815 >' | posutil print --from text -");
  }

  ExitStatus Run(Session& session) override {
    WriteDocuments(fDocument, *FindFormat<Writer>(fFormat), session.OutStyle(), session,
                   session.Out());
    session.Out().Put('\n');
    return kExitSuccess;
  }

 private:
  DocumentArgument fDocument;
  std::string fFormat = "tree";
} gPrintCommand;

}  // namespace

}  // namespace PosUtil
