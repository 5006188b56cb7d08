// SPDX-License-Identifier: MIT
#include <algorithm>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "base/Printable.h"
#include "commands/Command.h"
#include "commands/documents/FilesArgument.h"
#include "commands/documents/FormatOption.h"
#include "commands/verdicts/Schema.h"
#include "commands/verdicts/VerdictRecords.h"
#include "commands/verdicts/VerdictReport.h"
#include "commands/verdicts/WorkerPool.h"
#include "files/InputFile.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

class ValidateCommand final : public Command {
 public:
  ValidateCommand() : Command(10, "validate", "Checks documents against a type of a schema") {}

  void Declare(Options& options) override {
    options.Text("--schema", fSchema, "The schema, - for standard input")
        .File()
        .Required()
        .ShownAs("SCHEMA");
    DeclareFrom(options, "--schema-from", fSchemaFormat, "SCHEMA");
    options.Text("--type", fType, "The type that the documents must have")
        .Required()
        .ShownAs("NAME");
    options.Flag("--all", fAll, "Checks every document in each FILE");
    options.Flag("--no-schema-check", fTrustsSchema, "Skips the check of the schema");
    fDocuments.Declare(options, "FILE");
    fDocuments.DeclareRecursive(options);
    options
        .Number("--jobs,-j", fJobs,
                "Files to check at the same time, 0 for one for each processor; default: 1")
        .ShownAs("N");
    fResults.Declare(options);
    options.Footer(
        "Each message starts with the place of the value, FILE:LINE:COLUMN, and ends with the\n"
        "value. A note has the place of the rule in SCHEMA. Exit status: 0 if all documents are\n"
        "valid, 1 if one is not valid, 3 if one cannot be read or checked. An error does not stop\n"
        "the check of the other files. A schema that is not valid ends the command with status "
        "3.\n\n"
        "With --recursive, FILE may be a folder. It stands for the files below it whose ending\n"
        "names a format, except hidden files and SCHEMA. With --jobs, messages come in the same\n"
        "order as without.\n\n"
        "Examples:\n"
        "  posutil validate --schema people.txt --type Person ada.json charles.json\n"
        "  posutil validate --schema people.txt --type Person --quiet ada.json && echo valid\n"
        "  posutil validate --schema people.txt --type Person --recursive --jobs 0 people");
  }

  ExitStatus Run(Session& session) override {
    bool isReady = false;
    try {
      return CheckAll(session, isReady);
    } catch (const Failure& failure) {
      if (!isReady) fResults.PrintFailure(failure.what(), session);
      throw;
    }
  }

 private:
  using Files = std::vector<FilesArgument::Found>;

  // Sets `isReady` when only the documents are left.
  ExitStatus CheckAll(Session& session, bool& isReady) {
    fDocuments.SetLoss(session);
    const Reader& schemaFormat = FormatOfInput(fSchemaFormat, fSchema, "--schema-from");
    const Files files = fDocuments.Expand(fSchema);
    session.TheProgress().Show(session.Out().Descriptor());

    const auto schemaDocument =
        OpenDocuments(schemaFormat, fSchema, Extent::kOne, session, fResults.WantedText());
    const CPOSObject schemaObject = schemaDocument->Next();
    DocumentPlaces schemaPlaces(schemaFormat, schemaDocument->LastText());
    const Schema schema(schemaObject, InputName(fSchema), schemaPlaces, session.TheLibrary());
    if (!fTrustsSchema) schema.RequireItself(fResults.MaxMessages());
    schema.RequireType(fType);
    isReady = true;

    if (Jobs(files) > 1) return CheckInParallel(files, schema, session);
    VerdictReport report(fResults, session);
    if (fAll) session.Idle() = [&session] { session.Out().Flush(); };
    for (std::size_t i = 0; i < files.size(); ++i) {
      session.TheProgress().SetFile(i + 1, files.size());
      CheckFile(files[i], schema, session, report);
    }
    return report.Finish();
  }

  std::size_t Jobs(const Files& files) const {
    constexpr std::size_t kMost = 256;
    const std::size_t jobs = fJobs > 0 ? fJobs : std::thread::hardware_concurrency();
    return std::min({jobs, files.size(), kMost});
  }

  ExitStatus CheckInParallel(const Files& files, const Schema& schema, Session& session) const {
    session.Out().Flush();
    WorkerPool pool(Jobs(files), files.size());
    if (pool.IsWorker()) return Work(pool, files, schema, session);
    VerdictReport report(fResults, session);
    Progress& progress = session.TheProgress();
    progress.Begin("checking", files.size());
    std::size_t documents = 0;  // of the current file, as far as there are verdicts
    std::size_t done = 0;
    VerdictOrder order(files.size(), [&](VerdictRecord record) {
      if (record.fKind == VerdictRecord::kVerdict) documents = record.fName.fDocument;
      if (record.fKind == VerdictRecord::kEnd) {
        documents = 0;
        pool.SetDone(++done);
      }
      Replay(std::move(record), session, report);
    });
    do {
      if (pool.IsWorker()) return Work(pool, files, schema, session);
      std::vector<VerdictReceiver> receivers(pool.Count());
      pool.ReceiveAll([&](std::size_t worker, std::string_view bytes) {
        receivers[worker].Add(bytes);
        while (auto record = receivers[worker].Next()) order.Add(std::move(*record));
      });
      session.Out().Flush();
    } while (pool.Restart());
    order.Finish([&](std::size_t task) {
      const std::string name = InputName(files[task].fName);
      const std::size_t document = fAll ? std::exchange(documents, 0) + 1 : 0;
      report.Add({name, schema.Name(), document}, [&]() -> std::optional<Verdict> {
        throw Failure(Printable(name) + ": the process that checked it has ended");
      });
    });
    const ExitStatus status = report.Finish();
    if (!pool.HasFailed() || status == kExitFailure) return status;
    session.Out().Flush();  // the verdicts are complete
    throw Failure("a process that checked files has failed");
  }

  static void Replay(VerdictRecord record, Session& session, VerdictReport& report) {
    switch (record.fKind) {
      case VerdictRecord::kMessage:
        return session.PutMessage(record.fText);
      case VerdictRecord::kVerdict:
        return report.Count(record.fName, std::move(record.fVerdict));
      case VerdictRecord::kUnchecked:
        return report.CountUnchecked(record.fName, record.fText);
      case VerdictRecord::kEnd:
        return session.TheProgress().Advance(1);
    }
  }

  // Returns kExitSuccess: only the parent reports.
  ExitStatus Work(WorkerPool& pool, const Files& files, const Schema& schema,
                  Session& session) const {
    session.TheProgress().Hide();
    Output results(pool.Results());
    while (const auto task = pool.NextTask()) {
      auto sender = std::make_unique<VerdictSender>(*task, results);
      const MessageRedirection redirection(
          session, [to = sender.get()](const std::string& text) { to->PutMessage(text); });
      VerdictReport report(fResults, session, std::move(sender));
      CheckFile(files[*task], schema, session, report);
      report.Finish();
    }
    return kExitSuccess;
  }

  void CheckFile(const FilesArgument::Found& found, const Schema& schema, Session& session,
                 VerdictReport& report) const {
    const std::string& file = found.fName;
    const CKAPStringAtom type(fType.c_str());
    CheckedName name = {InputName(file), schema.Name(), fAll ? 1U : 0U};
    std::unique_ptr<Documents> documents;
    const auto checkNext = [&]() -> std::optional<Verdict> {
      if (!found.fProblem.empty()) {
        throw Failure(Printable(file) + ": " + Printable(found.fProblem));
      }
      const Extent extent = fAll ? Extent::kAll : Extent::kOne;
      if (!documents) documents = fDocuments.Open(file, extent, fResults.WantedText(), session);
      const CPOSObject object = documents->Next();
      if (object.IsNull()) return std::nullopt;
      DocumentPlaces places(fDocuments.FormatOf(file, extent), documents->LastText());
      return schema.Check(object, type, name.fFile, places, report.Check());
    };
    while (report.Add(name, checkNext) && fAll) ++name.fDocument;
  }

  std::string fSchema;
  std::string fSchemaFormat;
  std::string fType;
  bool fTrustsSchema = false;
  bool fAll = false;
  std::size_t fJobs = 1;
  FilesArgument fDocuments;
  VerdictOptions fResults;
} gValidateCommand;

}  // namespace

}  // namespace PosUtil
