#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "POSDict.h"
#include "base/DecimalText.h"
#include "base/Printable.h"
#include "base/Utf.h"
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
    options.add_option("PATH", fPaths, "Keys and indices, as in a.b[2].c")
        ->required()
        ->option_text("...");
    DeclareTo(options, fFormat, "Format of every value");
    options.footer(
        "Each value goes to a line of its own. Without --to, numbers and strings are printed as\n"
        "they are, other values as JSON; with it, a string cannot be taken for something else,\n"
        "nor spread over lines.\n"
        "A path where nothing is gets no line; it is named on standard error, and the exit\n"
        "status is then 1. The document must be a dictionary.\n\n"
        "Examples:\n"
        "  posutil get settings.json window.size[0]\n"
        "  posutil get --to json settings.txt title window");
  }

  // CLI11 would take [0] for a list. With a dot before it a path means the same.
  void Prepare(std::vector<std::string>& arguments) const override {
    for (std::string& argument : arguments) {
      if (argument.starts_with('[') && argument.ends_with(']')) argument.insert(0, 1, '.');
    }
  }

  ExitStatus Run(Session& session) override {
    const CPOSObject root = fDocument.Read(session);
    const CPOSDict dict(root, true);
    if (dict.IsNull()) {
      throw Failure(Printable(fDocument.Name()) +
                    ": the document is no dictionary, so no path leads into it");
    }
    ExitStatus status = kExitSuccess;
    for (const std::string& path : fPaths) {
      const CPOSObject value = dict.DeepGet(path.c_str(), true);
      if (value.IsNull()) {
        session.Complain(Printable(fDocument.Name()) + ": nothing at \"" + Printable(path) + "\"");
        status = kExitNegative;
      } else {
        PrintValue(value, path, session);
      }
    }
    return status;
  }

 private:
  void PrintValue(const CPOSObject& value, const std::string& path, Session& session) const {
    const std::string name = fDocument.Name() + ": " + path;
    if (!fFormat.empty() || !PrintPlainly(value, name, session.Out())) {
      const Writer& writer = *FindFormat<Writer>(fFormat.empty() ? "json" : fFormat);
      writer.Write(value, name, {.fOnOneLine = true, .fStyle = session.OutStyle()}, session.Out());
    }
    session.Out().Put('\n');
  }

  // False when the value has no plain form.
  static bool PrintPlainly(const CPOSObject& value, const std::string& name, Output& out) {
    if (const CPOSNumber number(value, true); number) {
      out.Put(DecimalText(number.Get()).View());
    } else if (const CPOSString string(value, true); string) {
      out.Put(string.Get());
    } else if (const CPOSUnicodeString unicode(value, true); unicode) {
      std::string text;
      if (!Utf16ToUtf8(unicode.Get(), text)) {
        throw ValueError("a Unicode string with a lone surrogate").At(name, "");
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
