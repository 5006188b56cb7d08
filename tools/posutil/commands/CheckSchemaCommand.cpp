#include <CLI/CLI.hpp>

#include "commands/Command.h"
#include "commands/documents/FilesArgument.h"
#include "commands/verdicts/Schema.h"
#include "commands/verdicts/VerdictReport.h"
#include "files/InputFile.h"

namespace PosUtil {

namespace {

class CheckSchemaCommand final : public Command {
 public:
  CheckSchemaCommand() : Command(5, "check-schema", "Checks schemas") {}

  void Declare(CLI::App& options) override {
    fSchemas.Declare(options, "SCHEMA");
    fResults.Declare(options);
    options.footer(
        "Each message is on a line of its own, after the name of the SCHEMA and the path to the\n"
        "fault. Exit status: 0 if all schemas are valid, 1 if one is not valid, 3 if one cannot\n"
        "be read or checked. An error does not stop the check of the other schemas.\n\n"
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
      report.Add(name, [&] {
        return Schema(fSchemas.Read(file, session), name, session.TheLibrary())
            .CheckItself(fResults.WantedMessages());
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
