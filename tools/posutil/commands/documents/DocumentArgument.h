// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/ValueError.h"
#include "commands/declarations/Options.h"
#include "commands/documents/FormatOption.h"
#include "commands/documents/LayoutOption.h"

namespace PosUtil {

// The arguments of a command that reads the documents of one file.
class DocumentArgument {
 public:
  // Declares the file, under this name, --from and --loss.
  void Declare(Options& options, const char* name = "FILE");
  // Declares --all.
  void DeclareAll(Options& options);
  // Declares --compact and --indent.
  void DeclareLayout(Options& options) { fLayout.Declare(options); }

  // Throws Failure if neither --from nor the file determines the format.
  const Reader& Format() const {
    return FormatOfInput(fFormat, fFile, "--from", fAll ? Extent::kAll : Extent::kOne);
  }
  // The name of the file in messages.
  std::string Name() const;
  // Call it first. `byDefault` is for a missing --loss.
  void SetLoss(Session& session, LossMode byDefault = LossMode::kWarn) const {
    session.Loss() = LossModeOf(fLoss, byDefault);
  }
  // Returns whether `file` names the file of the document.
  bool IsFile(const std::string& file) const;
  // Returns whether --all is given.
  bool ReadsAll() const { return fAll; }
  // The argument.
  const std::string& File() const { return fFile; }

  // Opens the file. Next then returns the only document, or each one with --all; `out` is flushed
  // before it waits for more input. Throws Failure, also for the reports of the library.
  std::unique_ptr<Documents> Open(Output& out, Session& session) const;
  // The name of a document in messages; they count from 1.
  std::string Name(std::size_t number) const;

  // Calls `use` for each document and its number; `out` is what it writes to. If it throws Failure,
  // the output and the warnings of the documents before are complete. Without --all, the document
  // is kept until the session ends.
  using Use = std::function<void(KAP_T_MT::CPOSObject& document, std::size_t number)>;
  void ForEach(Documents& documents, Output& out, Session& session, const Use& use) const;

  // Throws the failure to write a value of the document, with its place in the text. `documents`
  // has read this document last.
  [[noreturn]] void FailWithPlace(const ValueFailure& failure, std::size_t number,
                                  const Documents& documents, Session& session) const;

  // Changes a document before it is written. `name` is its name in messages.
  using Change = std::function<void(KAP_T_MT::CPOSObject& document, const std::string& name)>;

  // Reads the documents and writes each of them, with `end` after the last one; on a line of its
  // own if --all is given, no other layout is, and the format allows it. Writes what it has before
  // it waits for more input.
  // Throws Failure, also for the reports of the library.
  // With `change`, writes them changed and, without --all, in their own layout by default.
  void Write(const Writer& writer, std::string_view end, Style style, Session& session, Output& out,
             const Change& change = {}) const;

 private:
  std::unique_ptr<Documents> OpenAs(Extent extent, Text text, Session& session) const;
  bool CanBeReadAgain() const;
  static void EndAfterFailure(Documents& documents, Output& out);

  std::string fFile;
  std::string fFormat;
  std::string fLoss;
  LayoutOption fLayout;
  bool fAll = false;
};

}  // namespace PosUtil
