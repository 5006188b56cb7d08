// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "commands/declarations/Options.h"
#include "commands/documents/DocumentArgument.h"

namespace PosUtil {

// The arguments of a command that changes a document: FILE, and where the result goes. It keeps the
// format and, by default, the layout of the document.
class ChangedDocument {
 public:
  // Declares FILE, its options and --in-place.
  void Declare(Options& options);

  // What Command::Prepare does for these options.
  static void Prepare(std::vector<std::string>& arguments);
  // Call it first: it sets how everything is read. Throws Failure with kExitUsage.
  void Begin(Session& session) const;
  // Changes the document, or each with --all, and writes the result: to standard output or, after
  // the last one, in place of FILE. Throws Failure, also what `change` throws; FILE then stays.
  void Run(Session& session, const DocumentArgument::Change& change) const;

  std::string Name() const { return fDocument.Name(); }
  bool IsStandardInput() const { return fDocument.File() == "-"; }

 private:
  void Write(Session& session, Output& out, Style style,
             const DocumentArgument::Change& change) const;

  bool IsInPlace() const { return fInPlace != kNo; }
  bool HasSuffix() const { return IsInPlace() && fInPlace != kYes; }
  std::string Suffix() const;

  // The parser gives a flag the value "true". A suffix is hidden, so none is one of these.
  static constexpr char kNo[] = "false";
  static constexpr char kYes[] = "true";

  DocumentArgument fDocument;
  std::string fInPlace = kNo;
};

}  // namespace PosUtil
