#include "commands/documents/FilesArgument.h"

#include <CLI/CLI.hpp>

#include "commands/documents/FormatOption.h"

namespace PosUtil {

void FilesArgument::Declare(CLI::App& options, const char* name) {
  options.add_option(name, fFiles, "The documents, - for standard input")
      ->required()
      ->option_text("...");
  DeclareFrom(options, "--from", fFormat, name);
  DeclareLoss(options, fLoss);
}

void FilesArgument::SetLoss(Session& session) const { session.Loss() = LossModeOf(fLoss); }

void FilesArgument::CheckFormats() const {
  for (const std::string& file : fFiles) FormatOfFile(fFormat, file, "--from");
}

KAP_T_MT::CPOSObject FilesArgument::Read(const std::string& file, Session& session) const {
  const Reader& format = FormatOfFile(fFormat, file, "--from");
  return OpenDocuments(format, file, Extent::kOne, session)->Next();
}

}  // namespace PosUtil
