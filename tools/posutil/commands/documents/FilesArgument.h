// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "commands/declarations/Options.h"
#include "formats/Format.h"
#include "program/Session.h"

namespace PosUtil {

// The arguments of a command that reads several files.
class FilesArgument {
 public:
  // Declares the files, under this name, --from and --loss.
  void Declare(Options& options, const char* name);

  // Declares --recursive.
  void DeclareRecursive(Options& options);

  // Call it first.
  void SetLoss(Session& session) const;
  // Throws Failure with kExitUsage if the format of a file is unknown.
  void CheckFormats() const;

  struct Found {
    std::string fName;
    std::string fProblem = {};  // why it cannot be read, if that is known already
  };
  // The files and, in place of each folder, the files below it: sorted, without hidden ones, and
  // only those whose ending stands for a format. A folder without any is a problem. `excluded` is a
  // file that only counts if it is named itself. Throws Failure with kExitUsage for a folder
  // without --recursive and for a file whose format is unknown.
  std::vector<Found> Expand(const std::string& excluded) const;
  const std::vector<std::string>& Files() const { return fFiles; }
  const Reader& FormatOf(const std::string& file, Extent extent = Extent::kOne) const;
  // Opens the file for reading. Throws Failure, also for the reports of the library.
  std::unique_ptr<Documents> Open(const std::string& file, Extent extent, Text text,
                                  Session& session) const;

 private:
  void AddFolder(const std::string& folder, const std::string& excluded,
                 std::vector<Found>& found) const;
  bool HasFormat(const std::string& file) const;
  void CheckFormat(const std::string& file) const;

  std::vector<std::string> fFiles;
  std::string fFormat;
  std::string fLoss;
  bool fIsRecursive = false;
};

}  // namespace PosUtil
