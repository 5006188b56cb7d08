// SPDX-License-Identifier: MIT
#include "commands/documents/DocumentArgument.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "files/InputFile.h"
#include "formats/DocumentLayout.h"
#include "formats/DocumentPlaces.h"

namespace PosUtil {

void DocumentArgument::Declare(Options& options, const char* name) {
  options.Argument(name, fFile, "The document, - for standard input").File();
  DeclareFrom(options, "--from", fFormat, name);
  DeclareLoss(options, fLoss);
}

void DocumentArgument::DeclareAll(Options& options) {
  options.Flag("--all", fAll, "Reads every document in the input");
}

std::string DocumentArgument::Name() const { return InputName(fFile); }

std::string DocumentArgument::Name(std::size_t number) const {
  return fAll ? Name() + ", document " + std::to_string(number) : Name();
}

bool DocumentArgument::IsFile(const std::string& file) const {
  std::error_code error;  // a file that does not exist is not this one
  const std::string own = fFile == "-" ? "/dev/stdin" : fFile;
  return file != "-" && std::filesystem::equivalent(file, own, error);
}

std::unique_ptr<Documents> DocumentArgument::Open(Output& out, Session& session) const {
  if (fAll) session.Idle() = [&out] { out.Flush(); };
  return OpenAs(fAll ? Extent::kAll : Extent::kOne, CanBeReadAgain() ? Text::kDropped : Text::kKept,
                session);
}

std::unique_ptr<Documents> DocumentArgument::OpenAs(Extent extent, Text text,
                                                    Session& session) const {
  return OpenDocuments(Format(), fFile, extent, session, text);
}

void DocumentArgument::ForEach(Documents& documents, Output& out, Session& session,
                               const Use& use) const {
  if (fAll) out.HoldDocuments();
  try {
    std::size_t number = 0;
    while (KAP_T_MT::CPOSObject object = documents.Next()) {
      use(object, ++number);
      out.EndDocument();
      if (!fAll) session.KeepToEnd(std::move(object));
    }
  } catch (const Failure&) {
    if (fAll) EndAfterFailure(documents, out);
    throw;
  }
}

void DocumentArgument::EndAfterFailure(Documents& documents, Output& out) {
  try {
    out.DropIncomplete();
    out.Flush();
    documents.ReportLosses();
  } catch (const Failure&) {
    // The first failure is the one to report.
  }
}

bool DocumentArgument::CanBeReadAgain() const {
  std::error_code error;
  return fFile != "-" && std::filesystem::is_regular_file(fFile, error);
}

// The text of a pipe is kept for this; a file is read again.
void DocumentArgument::FailWithPlace(const ValueFailure& failure, std::size_t number,
                                     const Documents& documents, Session& session) const {
  DocumentText text = documents.LastText();
  std::unique_ptr<Documents> again;
  if (CanBeReadAgain()) {
    again = OpenAs(Extent::kAll, Text::kKept, session);  // does not repeat the warnings
    for (std::size_t i = 0; i < number; ++i) again->Next();
    text = again->LastText();
  }
  throw DocumentPlaces(Format(), text).ErrorAt(Name(), failure.Path(), failure.Explanation());
}

void DocumentArgument::Write(const Writer& writer, std::string_view end, Style style,
                             Session& session, Output& out, const Change& change) const {
  Progress& progress = session.TheProgress();
  progress.Show(out.Descriptor());
  WriteOptions options = {.fRestoresKept = session.Loss() == LossMode::kKeep, .fStyle = style};
  fLayout.Apply(writer, fAll, options);
  const bool hasOwnLayout = change && !fAll && !fLayout.IsGiven();
  const auto documents =
      hasOwnLayout ? OpenAs(Extent::kOne, Text::kKept, session) : Open(out, session);
  // The line of a document ends with it, not before the next one: a reader may wait for it.
  const bool endsLines = fAll && writer.kBetween.starts_with('\n');
  std::size_t count = 0;
  ForEach(*documents, out, session, [&](KAP_T_MT::CPOSObject& object, std::size_t number) {
    count = number;
    if (number > 1) out.Put(writer.kBetween.substr(endsLines ? 1 : 0));
    if (change) {
      if (hasOwnLayout) ApplyLayout(Format(), documents->LastText(), options);
      change(object, Name(number));
    }
    if (!fAll) {  // with several documents, reading advances the progress
      progress.Begin("writing", 0);
      out.SetProgress(progress);
    }
    try {
      writer.Write(object, Name(number), options, out);
    } catch (const ValueFailure& failure) {
      if (change) throw;  // the value may not be in the text
      FailWithPlace(failure, number, *documents, session);
    }
    if (endsLines) out.Put('\n');
    session.TheLibrary().CheckReports(Name(number));
  });
  if (!endsLines && count > 0) out.Put(end);
}

}  // namespace PosUtil
