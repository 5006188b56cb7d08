// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "formats/Format.h"
#include "program/Session.h"

namespace CLI {
class App;
}

namespace PosUtil {

// The arguments of a command that reads several files.
class FilesArgument {
 public:
  // Declares the files, under this name, --from and --loss.
  void Declare(CLI::App& options, const char* name);

  // Call it first.
  void SetLoss(Session& session) const;
  // Throws Failure with kExitUsage if the format of a file is unknown.
  void CheckFormats() const;
  const std::vector<std::string>& Files() const { return fFiles; }
  const Reader& FormatOf(const std::string& file) const;
  // Opens the file for reading. Throws Failure, also for the reports of the library.
  std::unique_ptr<Documents> Open(const std::string& file, Extent extent, Text text,
                                  Session& session) const;

 private:
  std::vector<std::string> fFiles;
  std::string fFormat;
  std::string fLoss;
};

}  // namespace PosUtil
