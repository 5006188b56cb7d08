#include <CLI/CLI.hpp>

#include "commands/Command.h"
#include "commands/documents/DocumentArgument.h"
#include "commands/documents/FilesArgument.h"
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
    options.add_option("--type", fType, "The type that the documents are to be of")
        ->required()
        ->option_text("NAME");
    options.add_flag("--no-schema-check", fTrustsSchema, "Does not check the schema first");
    fDocuments.Declare(options, "FILE");
    fResults.Declare(options);
    options.footer(
        "A message goes to a line of its own, behind the name of its FILE and the way to the\n"
        "place. Exit status: 0 when all documents are valid, 1 when one is not, 3 when one\n"
        "cannot be read or checked, whatever the others are. All documents are looked at. With\n"
        "a schema that is not valid nothing is checked: 3.\n\n"
        "Examples:\n"
        "  posutil validate --schema people.txt --type Person ada.json charles.json\n"
        "  posutil validate --schema people.txt --type Person --quiet ada.json && echo valid");
  }

  ExitStatus Run(Session& session) override {
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
