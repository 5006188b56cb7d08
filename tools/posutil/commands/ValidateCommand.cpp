// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <optional>

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
  ValidateCommand() : Command(10, "validate", "Checks documents against a type of a schema") {}

  void Declare(CLI::App& options) override {
    options.add_option("--schema", fSchema, "The schema, - for standard input")
        ->required()
        ->option_text("SCHEMA");
    DeclareFrom(options, "--schema-from", fSchemaFormat, "SCHEMA");
    options.add_option("--type", fType, "The type that the documents must have")
        ->required()
        ->option_text("NAME");
    options.add_flag("--all", fAll, "Checks every document in each FILE");
    options.add_flag("--no-schema-check", fTrustsSchema, "Skips the check of the schema");
    fDocuments.Declare(options, "FILE");
    fResults.Declare(options);
    options.footer(
        "Each message starts with the place of the value, FILE:LINE:COLUMN, and ends with the\n"
        "value. A note has the place of the rule in SCHEMA. Exit status: 0 if all documents are\n"
        "valid, 1 if one is not valid, 3 if one cannot be read or checked. An error does not stop\n"
        "the check of the other files. A schema that is not valid ends the command with status "
        "3.\n\n"
        "Examples:\n"
        "  posutil validate --schema people.txt --type Person ada.json charles.json\n"
        "  posutil validate --schema people.txt --type Person --quiet ada.json && echo valid");
  }

  ExitStatus Run(Session& session) override {
    fDocuments.SetLoss(session);
    const Reader& schemaFormat = FormatOfInput(fSchemaFormat, fSchema, "--schema-from");
    fDocuments.CheckFormats();
    session.TheProgress().Show(session.Out().Descriptor());

    const auto schemaDocument =
        OpenDocuments(schemaFormat, fSchema, Extent::kOne, session, fResults.WantedText());
    const CPOSObject schemaObject = schemaDocument->Next();
    DocumentPlaces schemaPlaces(schemaFormat, schemaDocument->LastText());
    const Schema schema(schemaObject, InputName(fSchema), schemaPlaces, session.TheLibrary());
    if (!fTrustsSchema) schema.RequireItself(fResults.MaxMessages());
    schema.RequireType(fType);

    VerdictReport report(fResults, session);
    if (fAll) session.Idle() = [&session] { session.Out().Flush(); };
    for (const std::string& file : fDocuments.Files()) CheckFile(file, schema, session, report);
    return report.Finish();
  }

 private:
  void CheckFile(const std::string& file, const Schema& schema, Session& session,
                 VerdictReport& report) const {
    const CKAPStringAtom type(fType.c_str());
    CheckedName name = {InputName(file), schema.Name(), fAll ? 1U : 0U};
    std::unique_ptr<Documents> documents;
    const auto checkNext = [&]() -> std::optional<Verdict> {
      const Extent extent = fAll ? Extent::kAll : Extent::kOne;
      if (!documents) documents = fDocuments.Open(file, extent, fResults.WantedText(), session);
      const CPOSObject object = documents->Next();
      if (object.IsNull()) return std::nullopt;
      DocumentPlaces places(fDocuments.FormatOf(file), documents->LastText());
      return schema.Check(object, type, name.fFile, places, report.Check());
    };
    while (report.Add(name, checkNext) && fAll) ++name.fDocument;
  }

  std::string fSchema;
  std::string fSchemaFormat;
  std::string fType;
  bool fTrustsSchema = false;
  bool fAll = false;
  FilesArgument fDocuments;
  VerdictOptions fResults;
} gValidateCommand;

}  // namespace

}  // namespace PosUtil
