// SPDX-License-Identifier: MIT
#include "commands/documents/FilesArgument.h"

#include <CLI/CLI.hpp>

#include "base/Failure.h"
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
  for (const std::string& file : fFiles) {
    try {
      FormatOf(file);
    } catch (const Failure& failure) {
      // A file that cannot be read does not keep the others from being checked.
      if (failure.Status() == kExitUsage) throw;
    }
  }
}

const Reader& FilesArgument::FormatOf(const std::string& file) const {
  return FormatOfInput(fFormat, file, "--from");
}

std::unique_ptr<Documents> FilesArgument::Open(const std::string& file, Extent extent, Text text,
                                               Session& session) const {
  return OpenDocuments(FormatOf(file), file, extent, session, text);
}

}  // namespace PosUtil
