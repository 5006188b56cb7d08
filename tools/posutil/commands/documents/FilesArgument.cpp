// SPDX-License-Identifier: MIT
#include "commands/documents/FilesArgument.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/Failure.h"
#include "base/Printable.h"
#include "commands/documents/FormatOption.h"

namespace PosUtil {

namespace fs = std::filesystem;

void FilesArgument::Declare(Options& options, const char* name) {
  options.Arguments(name, fFiles, "The documents, - for standard input").File();
  DeclareFrom(options, "--from", fFormat, name);
  DeclareLoss(options, fLoss);
}

void FilesArgument::DeclareRecursive(Options& options) {
  options.Flag("--recursive,-r", fIsRecursive, "Takes folders, for the files below them");
}

std::vector<FilesArgument::Found> FilesArgument::Expand(const std::string& excluded) const {
  std::vector<Found> found;
  for (const std::string& file : fFiles) {
    std::error_code error;  // a file that cannot be looked at is not a folder
    if (file == "-" || !fs::is_directory(file, error)) {
      CheckFormat(file);
      found.push_back({file});
    } else if (!fIsRecursive) {
      throw Failure(Printable(file) + ": is a folder; use --recursive", kExitUsage);
    } else {
      const std::size_t before = found.size();
      AddFolder(file, excluded, found);
      if (found.size() == before) found.push_back({file, "no file of a known format"});
    }
  }
  return found;
}

// Links to folders are not followed: they may lead in circles.
void FilesArgument::AddFolder(const std::string& folder, const std::string& excluded,
                              std::vector<Found>& found) const {
  std::error_code error;
  std::vector<fs::directory_entry> entries;
  for (fs::directory_iterator i(folder, error), end; !error && i != end; i.increment(error)) {
    if (!i->path().filename().string().starts_with('.')) entries.push_back(*i);
  }
  if (error) found.push_back({folder, error.message()});
  std::sort(entries.begin(), entries.end());
  for (const fs::directory_entry& entry : entries) {
    std::error_code ignored;  // of an entry that has gone
    const std::string name = entry.path().string();
    if (entry.symlink_status(ignored).type() == fs::file_type::directory) {
      AddFolder(name, excluded, found);
    } else if (entry.is_regular_file(ignored) && HasFormat(name) &&
               !fs::equivalent(name, excluded, ignored)) {
      found.push_back({name});
    }
  }
}

// With --from, only endings of that format.
bool FilesArgument::HasFormat(const std::string& file) const {
  const Reader* const reader = Reader::ForEnding(file);
  return reader && (fFormat.empty() || fFormat == reader->kName);
}

void FilesArgument::SetLoss(Session& session) const { session.Loss() = LossModeOf(fLoss); }

void FilesArgument::CheckFormats() const {
  for (const std::string& file : fFiles) CheckFormat(file);
}

void FilesArgument::CheckFormat(const std::string& file) const {
  try {
    FormatOf(file);
  } catch (const Failure& failure) {
    // A file that cannot be read does not keep the others from being checked.
    if (failure.Status() == kExitUsage) throw;
  }
}

const Reader& FilesArgument::FormatOf(const std::string& file, Extent extent) const {
  return FormatOfInput(fFormat, file, "--from", extent);
}

std::unique_ptr<Documents> FilesArgument::Open(const std::string& file, Extent extent, Text text,
                                               Session& session) const {
  return OpenDocuments(FormatOf(file, extent), file, extent, session, text);
}

}  // namespace PosUtil
