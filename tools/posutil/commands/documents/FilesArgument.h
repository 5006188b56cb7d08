#pragma once

#include <string>
#include <vector>

#include "pos/POSObject.h"
#include "program/Session.h"

namespace CLI {
class App;
}

namespace PosUtil {

// The arguments of a command that reads several files with one document each.
class FilesArgument {
 public:
  // Declares the files, under this name, --from and --loss.
  void Declare(CLI::App& options, const char* name);

  // Call it first.
  void SetLoss(Session& session) const;
  // Throws Failure with kExitUsage if the format of a file is unknown.
  void CheckFormats() const;
  const std::vector<std::string>& Files() const { return fFiles; }
  // Throws Failure, also for the reports of the library.
  KAP_T_MT::CPOSObject Read(const std::string& file, Session& session) const;

 private:
  std::vector<std::string> fFiles;
  std::string fFormat;
  std::string fLoss;
};

}  // namespace PosUtil
