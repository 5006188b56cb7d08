// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "POSDict.h"
#include "base/DecimalText.h"
#include "base/Printable.h"
#include "base/Utf.h"
#include "base/ValueError.h"
#include "commands/Command.h"
#include "commands/documents/DocumentArgument.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

class GetCommand final : public Command {
 public:
  GetCommand() : Command(2, "get", "Prints the values at paths of a document") {}

  void Declare(CLI::App& options) override {
    fDocument.Declare(options);
    fDocument.DeclareAll(options);
    options.add_option("PATH", fPaths, "Keys and indices, as in a.b[2].c")
        ->required()
        ->option_text("...");
    DeclareTo(options, fFormat, "Format of the values");
    options.footer(
        "Prints each value on a line of its own. Without --to, numbers and strings appear as\n"
        "they are, other values as JSON. With --to, every value is unambiguous and takes one\n"
        "line. For a path without a value, prints a message on standard error and exits with\n"
        "status 1. The document must be a dictionary.\n\n"
        "Examples:\n"
        "  posutil get settings.json window.size[0]\n"
        "  posutil get --to json settings.txt title window");
  }

  // CLI11 parses [0] as a list. A dot before a path does not change its meaning.
  void Prepare(std::vector<std::string>& arguments) const override {
    for (std::string& argument : arguments) {
      if (argument.starts_with('[') && argument.ends_with(']')) argument.insert(0, 1, '.');
    }
  }

  ExitStatus Run(Session& session) override {
    fDocument.SetLoss(session);
    const auto documents = fDocument.Open(session.Out(), session);
    ExitStatus status = kExitSuccess;
    std::size_t number = 0;
    while (const CPOSObject root = documents->Next()) {
      if (!PrintValues(root, fDocument.Name(++number), session)) status = kExitNegative;
    }
    return status;
  }

 private:
  // Returns false if a path has no value.
  bool PrintValues(const CPOSObject& root, const std::string& name, Session& session) const {
    const CPOSDict dict(root, true);
    if (dict.IsNull()) throw Failure(Printable(name) + ": the document is not a dictionary");
    bool hasAll = true;
    for (const std::string& path : fPaths) {
      const CPOSObject value = dict.DeepGet(path.c_str(), true);
      if (value.IsNull()) {
        session.Complain(Printable(name) + ": no value at \"" + Printable(path) + "\"");
        hasAll = false;
      } else {
        PrintValue(value, name + ": " + path, session);
      }
    }
    return hasAll;
  }

  void PrintValue(const CPOSObject& value, const std::string& name, Session& session) const {
    if (!fFormat.empty() || !PrintPlainly(value, name, session.Out())) {
      const Writer& writer = *FindFormat<Writer>(fFormat.empty() ? "json" : fFormat);
      writer.Write(value, name,
                   {.fOnOneLine = true,
                    .fRestoresKept = session.Loss() == LossMode::kKeep,
                    .fStyle = session.OutStyle()},
                   session.Out());
    }
    session.Out().Put('\n');
  }

  // Returns false if the value has no plain form.
  static bool PrintPlainly(const CPOSObject& value, const std::string& name, Output& out) {
    if (const CPOSNumber number(value, true); number) {
      out.Put(DecimalText(number.Get()).View());
    } else if (const CPOSString string(value, true); string) {
      out.Put(string.Get());
    } else if (const CPOSUnicodeString unicode(value, true); unicode) {
      std::string text;
      if (!Utf16ToUtf8(unicode.Get(), text)) {
        throw ValueFailure(name, {}, kLoneSurrogate);
      }
      out.Put(text);
    } else {
      return false;
    }
    return true;
  }

  DocumentArgument fDocument;
  std::vector<std::string> fPaths;
  std::string fFormat;
} gGetCommand;

}  // namespace

}  // namespace PosUtil
