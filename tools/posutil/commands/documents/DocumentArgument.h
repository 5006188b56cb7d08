#pragma once

#include <string>
#include <vector>

#include "formats/Format.h"
#include "program/Session.h"

namespace CLI {
class App;
}

namespace PosUtil {

// The format of a file, of that name or as the file's ending tells. `option` gives the name:
// without either, a Failure says so.
const Reader& FormatOfFile(const std::string& format, const std::string& file, const char* option);

// The documents of a file. Next also throws Failure for what the library reports.
std::unique_ptr<Documents> OpenDocuments(const Reader& reader, const std::string& file,
                                         Extent extent, Session& session);

// The arguments of commands that read documents.
class DocumentArgument {
 public:
  // The file, called so in the help, and --from.
  void Declare(CLI::App& options, const char* name = "FILE");
  // --all as well.
  void DeclareAll(CLI::App& options);

  // Throws Failure when nothing tells.
  const Reader& Format() const { return FormatOfFile(fFormat, fFile, "--from"); }
  Extent HowMany() const { return fAll ? Extent::kAll : Extent::kOne; }
  // As messages call the document, or the one of that number.
  std::string Name() const;
  std::string Name(std::size_t number) const;

  std::unique_ptr<Documents> Open(Session& session) const;
  // The only document.
  KAP_T_MT::CPOSObject Read(Session& session) const { return Open(session)->Next(); }

 private:
  std::string fFile;
  std::string fFormat;
  bool fAll = false;
};

// Adds an option, such as --from, that takes the name of a format to read. `file` is the argument
// it is about.
void DeclareFrom(CLI::App& options, const char* option, std::string& format, const char* file);

// Adds an option --to that takes the name of a format to write.
void DeclareTo(CLI::App& options, std::string& format, const char* description);

// The same for a file: formats that can be read again.
void DeclareToOfFile(CLI::App& options, std::string& format, const char* description);

}  // namespace PosUtil
