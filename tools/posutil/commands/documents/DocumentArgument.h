// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "commands/documents/FormatOption.h"
#include "commands/documents/LayoutOption.h"

namespace PosUtil {

// The arguments of a command that reads the documents of one file.
class DocumentArgument {
 public:
  // Declares the file, under this name, --from and --loss.
  void Declare(CLI::App& options, const char* name = "FILE");
  // Declares --all.
  void DeclareAll(CLI::App& options);
  // Declares --compact and --indent.
  void DeclareLayout(CLI::App& options) { fLayout.Declare(options); }

  // Throws Failure if neither --from nor the ending of the file determines the format.
  const Reader& Format() const { return FormatOfFile(fFormat, fFile, "--from"); }
  // The name of the file in messages.
  std::string Name() const;
  // Call it first. `byDefault` is for a missing --loss.
  void SetLoss(Session& session, LossMode byDefault = LossMode::kWarn) const {
    session.Loss() = LossModeOf(fLoss, byDefault);
  }
  // Returns whether `file` names the file of the document.
  bool IsFile(const std::string& file) const;

  // Opens the file. Next then returns the only document, or each one with --all; `out` is flushed
  // before it waits for more input. Throws Failure, also for the reports of the library.
  std::unique_ptr<Documents> Open(Output& out, Session& session) const;
  // The name of a document in messages; they count from 1.
  std::string Name(std::size_t number) const;

  // Reads the documents and writes each of them, on a line if --all is given, no other layout is,
  // and the format allows it, with `end` after the last one. Writes what it has before it waits for more input.
  // Throws Failure, also for the reports of the library.
  void Write(const Writer& writer, std::string_view end, Style style, Session& session,
             Output& out) const;

 private:
  std::unique_ptr<Documents> OpenAs(Extent extent, Text text, Session& session) const;
  void WriteOne(const Writer& writer, const KAP_T_MT::CPOSObject& object, std::size_t number,
                const WriteOptions& options, const Documents& documents, Session& session,
                Output& out) const;
  bool CanBeReadAgain() const;

  std::string fFile;
  std::string fFormat;
  std::string fLoss;
  LayoutOption fLayout;
  bool fAll = false;
};

}  // namespace PosUtil
