#include "commands/documents/DocumentArgument.h"

#include <CLI/CLI.hpp>

#include "files/InputFile.h"

namespace PosUtil {

void DocumentArgument::Declare(CLI::App& options, const char* name) {
  options.add_option(name, fFile, "The document, - for standard input")
      ->required()
      ->option_text(" ");
  DeclareFrom(options, "--from", fFormat, name);
}

void DocumentArgument::DeclareAll(CLI::App& options) {
  options.add_flag("--all", fAll, "Reads every document in the input");
}

std::string DocumentArgument::Name() const { return InputName(fFile); }

std::string DocumentArgument::Name(std::size_t number) const {
  return fAll ? Name() + ", document " + std::to_string(number) : Name();
}

std::unique_ptr<Documents> DocumentArgument::Open(Session& session) const {
  return OpenDocuments(Format(), fFile, HowMany(), session);
}

void DocumentArgument::Write(const Writer& writer, Style style, Session& session,
                             Output& out) const {
  Progress& progress = session.TheProgress();
  progress.Show(out.Descriptor());
  const WriteOptions options = {.fOnOneLine = fAll, .fStyle = style};
  const auto documents = Open(session);
  std::size_t number = 0;
  while (const KAP_T_MT::CPOSObject object = documents->Next()) {
    if (++number > 1) out.Put(writer.kBetween);
    if (!fAll) {  // with several documents, reading advances the progress
      progress.Begin("writing", 0);
      out.SetProgress(progress);
    }
    writer.Write(object, Name(number), options, out);
    session.TheLibrary().CheckReports(Name(number));
  }
}

}  // namespace PosUtil
