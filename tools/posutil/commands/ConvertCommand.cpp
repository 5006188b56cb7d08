// SPDX-License-Identifier: MIT
#include <optional>

#include "commands/Command.h"
#include "commands/documents/DocumentArgument.h"
#include "files/Destination.h"

namespace PosUtil {

namespace {

class ConvertCommand final : public Command {
 public:
  ConvertCommand() : Command(4, "convert", "Converts a document to another format") {}

  void Declare(Options& options) override {
    fDocuments.Declare(options, "IN");
    options.Argument("OUT", fFile, "The file to write, - for standard output").File();
    DeclareToOfFile(options, fFormat, "Format of OUT; default: by its ending");
    fDocuments.DeclareAll(options);
    fDocuments.DeclareLayout(options);
    options.Footer(
        "A complete new file replaces OUT; a failure or an interruption leaves OUT unchanged. IN\n"
        "and OUT may be the same file. A value that the format of OUT cannot hold is an error;\n"
        "the message has the path to it.\n"
        "With --all, IN may hold any number of documents, typea or json, with or without space\n"
        "between them. Text on a line each can be written, but not read.\n"
        "A file that replaces itself must lose nothing: --loss=error is the default then.\n\n"
        "Examples:\n"
        "  posutil convert settings.json settings.typea\n"
        "  posutil convert --all log.typea log.jsonl\n"
        "  posutil convert --from typea --to json - - < settings.typea");
  }

  ExitStatus Run(Session& session) override {
    // A file that replaces itself leaves no copy in which to look up what is lost.
    const bool isItself = fDocuments.IsFile(fFile);
    fDocuments.SetLoss(session, isItself ? LossMode::kError : LossMode::kWarn);
    fDocuments.Format();  // wrong usage ends the command before it creates a file
    const Reader& format = FormatOfOutput(fFormat, fFile, "--to");
    const Writer& writer = *FindFormat<Writer>(format.kName);
    std::optional<Destination> destination;
    if (fFile != "-") destination.emplace(fFile);
    if (isItself) destination->RequireOld();
    Output& out = destination ? destination->Out() : session.Out();
    fDocuments.Write(writer, writer.kEnd, Style(), session, out);
    session.CheckReports();  // a late report leaves OUT unchanged
    if (destination) destination->Commit();
    return kExitSuccess;
  }

 private:
  DocumentArgument fDocuments;
  std::string fFile;
  std::string fFormat;
} gConvertCommand;

}  // namespace

}  // namespace PosUtil
