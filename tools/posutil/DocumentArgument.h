#pragma once

#include <string>
#include <vector>

#include "Format.h"
#include "Session.h"

namespace CLI {
class App;
}

namespace PosUtil {

// The arguments FILE and --from of commands that read a document.
class DocumentArgument {
 public:
  void Declare(CLI::App& options);

  // As messages call the document.
  const std::string& Name() const { return fName; }
  // Throws Failure, also for what the library reports.
  KAP_T_MT::CPOSObject Read(Session& session);

 private:
  const Reader& ChosenReader() const;

  std::string fFile;
  std::string fFormat;
  std::string fName;
};

// Adds an option --to that takes the name of a format to write.
void DeclareTo(CLI::App& options, std::string& format, const char* description);

}  // namespace PosUtil
