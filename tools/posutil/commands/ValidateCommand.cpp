#include <CLI/CLI.hpp>

#include "commands/Command.h"
#include "commands/documents/FilesArgument.h"
#include "commands/documents/FormatOption.h"
#include "commands/verdicts/Schema.h"
#include "commands/verdicts/VerdictReport.h"
#include "files/InputFile.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

class ValidateCommand final : public Command {
 public:
  ValidateCommand() : Command(4, "validate", "Checks documents against a type of a schema") {}

  void Declare(CLI::App& options) override {
    options.add_option("--schema", fSchema, "The schema, - for standard input")
        ->required()
        ->option_text("SCHEMA");
    DeclareFrom(options, "--schema-from", fSchemaFormat, "SCHEMA");
    options.add_option("--type", fType, "The type that the documents must have")
        ->required()
        ->option_text("NAME");
    options.add_flag("--no-schema-check", fTrustsSchema, "Skips the check of the schema");
    fDocuments.Declare(options, "FILE");
    fResults.Declare(options);
    options.footer(
        "Each message is on a line of its own, after the name of the FILE and the path to the\n"
        "fault. Exit status: 0 if all documents are valid, 1 if one is not valid, 3 if one cannot\n"
        "be read or checked. An error does not stop the check of the other documents. A schema\n"
        "that is not valid ends the command with status 3.\n\n"
        "Examples:\n"
        "  posutil validate --schema people.txt --type Person ada.json charles.json\n"
        "  posutil validate --schema people.txt --type Person --quiet ada.json && echo valid");
  }

  ExitStatus Run(Session& session) override {
    fDocuments.SetLoss(session);
    const Reader& schemaFormat = FormatOfFile(fSchemaFormat, fSchema, "--schema-from");
    fDocuments.CheckFormats();
    session.TheProgress().Show(session.Out().Descriptor());

    const auto schemaObject = OpenDocuments(schemaFormat, fSchema, Extent::kOne, session)->Next();
    const Schema schema(schemaObject, InputName(fSchema), session.TheLibrary());
    if (!fTrustsSchema) schema.RequireItself();
    schema.RequireType(fType);

    const CKAPStringAtom type(fType.c_str());
    VerdictReport report(fResults, session);
    for (const std::string& file : fDocuments.Files()) {
      const std::string name = InputName(file);
      report.Add(name, [&] {
        return schema.Check(fDocuments.Read(file, session), type, name, fResults.WantedMessages());
      });
    }
    return report.Finish();
  }

 private:
  std::string fSchema;
  std::string fSchemaFormat;
  std::string fType;
  bool fTrustsSchema = false;
  FilesArgument fDocuments;
  VerdictOptions fResults;
} gValidateCommand;

}  // namespace

}  // namespace PosUtil
