// SPDX-License-Identifier: MIT
#include <optional>

#include "commands/Command.h"
#include "commands/documents/FilesArgument.h"
#include "commands/verdicts/Schema.h"
#include "commands/verdicts/VerdictReport.h"
#include "files/InputFile.h"

namespace PosUtil {

namespace {

class CheckSchemaCommand final : public Command {
 public:
  CheckSchemaCommand() : Command(11, "check-schema", "Checks schemas") {}

  void Declare(Options& options) override {
    fSchemas.Declare(options, "SCHEMA");
    fResults.Declare(options);
    options.Footer(
        "Each message starts with the place of the fault, SCHEMA:LINE:COLUMN. Exit status: 0 if\n"
        "all schemas are valid, 1 if one is not valid, 3 if one cannot be read or checked. An\n"
        "error does not stop the check of the other schemas.\n\n"
        "Example:\n"
        "  posutil check-schema people.txt places.json");
  }

  ExitStatus Run(Session& session) override {
    fSchemas.SetLoss(session);
    fSchemas.CheckFormats();
    session.TheProgress().Show(session.Out().Descriptor());
    VerdictReport report(fResults, session);
    for (const std::string& file : fSchemas.Files()) {
      const std::string name = InputName(file);
      report.Add({name, name}, [&]() -> std::optional<Verdict> {
        const auto document = fSchemas.Open(file, Extent::kOne, fResults.WantedText(), session);
        const auto object = document->Next();
        DocumentPlaces places(fSchemas.FormatOf(file), document->LastText());
        return Schema(object, name, places, session.TheLibrary()).CheckItself(report.Check());
      });
    }
    return report.Finish();
  }

 private:
  FilesArgument fSchemas;
  VerdictOptions fResults;
} gCheckSchemaCommand;

}  // namespace

}  // namespace PosUtil
