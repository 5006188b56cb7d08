#include <CLI/CLI.hpp>
#include <optional>

#include "commands/Command.h"
#include "commands/documents/WriteDocuments.h"
#include "files/Destination.h"

namespace PosUtil {

namespace {

class ConvertCommand final : public Command {
 public:
  ConvertCommand() : Command(3, "convert", "Converts a document into another format") {}

  void Declare(CLI::App& options) override {
    fDocuments.Declare(options, "IN");
    options.add_option("OUT", fFile, "The file to make, - for standard output")
        ->required()
        ->option_text(" ");
    DeclareToOfFile(options, fFormat, "Format of OUT; else its ending tells");
    fDocuments.DeclareAll(options);
    options.footer(
        "OUT is replaced once it is complete: a failure or an interruption leaves it as it was.\n"
        "IN and OUT may be the same file.\n"
        "What the format of OUT cannot hold is an error that names its path.\n"
        "With --all, typea documents stand one behind the other, JSON documents and texts on a\n"
        "line each; text can be written so, not read.\n\n"
        "Examples:\n"
        "  posutil convert settings.json settings.typea\n"
        "  posutil convert --all log.typea log.jsonl\n"
        "  posutil convert --from typea --to json - - < settings.typea");
  }

  ExitStatus Run(Session& session) override {
    fDocuments.Format();  // wrong usage is told before anything is made
    const Reader& format = FormatOfFile(fFormat, fFile, "--to");
    const Writer& writer = *FindFormat<Writer>(format.kName);
    std::optional<Destination> destination;
    if (fFile != "-") destination.emplace(fFile);
    Output& out = destination ? destination->Out() : session.Out();
    WriteDocuments(fDocuments, writer, Style(), session, out);
    out.Put(writer.kBehind);
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
