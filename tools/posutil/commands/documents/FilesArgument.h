#pragma once

#include <string>
#include <vector>

#include "pos/POSObject.h"
#include "program/Session.h"

namespace CLI {
class App;
}

namespace PosUtil {

// The arguments of commands that read several files, a document in each.
class FilesArgument {
 public:
  // The files, called so in the help, and --from.
  void Declare(CLI::App& options, const char* name);

  // Failure, of wrong usage, unless the format of every file is known.
  void CheckFormats() const;
  const std::vector<std::string>& Files() const { return fFiles; }
  // Throws Failure, also for what the library reports.
  KAP_T_MT::CPOSObject Read(const std::string& file, Session& session) const;

 private:
  std::vector<std::string> fFiles;
  std::string fFormat;
};

}  // namespace PosUtil
