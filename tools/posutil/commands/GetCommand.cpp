// SPDX-License-Identifier: MIT
#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "POSDict.h"
#include "base/DecimalText.h"
#include "base/Printable.h"
#include "base/Utf.h"
#include "base/ValueError.h"
#include "commands/Command.h"
#include "commands/declarations/LiteralArguments.h"
#include "commands/documents/DocumentArgument.h"
#include "commands/values/Slot.h"
#include "commands/values/Values.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

class GetCommand final : public Command {
 public:
  GetCommand() : Command(2, "get", "Prints the values at paths of a document") {}

  void Declare(Options& options) override {
    fDocument.Declare(options);
    fDocument.DeclareAll(options);
    options.Arguments("PATH", fPaths, "Keys and indices, as in a.b[2].c or /a/b/2/c");
    DeclareTo(options, fFormat, "Format of the values");
    options.Text("--type", fType, "Fails unless every value is of this kind").OneOf(TypeNames());
    fDefaultOption =
        options.Text("--default", fDefault, "Printed in place of a value that is missing")
            .ShownAs("TEXT");
    options.Flag("-0", fEndsWithZero, "Ends each value with a zero byte, not a line end");
    options.Footer(
        "Prints each value on a line of its own. Without --to, numbers and strings appear as\n"
        "they are, other values as JSON. With --to, every value is unambiguous and takes one\n"
        "line. For a path without a value, prints a message on standard error and exits with\n"
        "status 1. A path that begins with / is a JSON Pointer, which can name every key.\n\n"
        "Examples:\n"
        "  posutil get settings.json window.size[0]\n"
        "  posutil get --to json settings.txt title window\n"
        "  posutil get --type number --default 10 settings.json /window/tab.width");
  }

  void Prepare(std::vector<std::string>& arguments) const override { HideBrackets(arguments); }

  ExitStatus Run(Session& session) override {
    for (const std::string& path : fPaths) RequireWellFormed(Path(path));
    fDocument.SetLoss(session);
    const auto documents = fDocument.Open(session.Out(), session);
    ExitStatus status = kExitSuccess;
    const auto print = [&](const CPOSObject& root, std::size_t number) {
      try {
        if (!PrintValues(root, fDocument.Name(number), session)) status = kExitNegative;
      } catch (const ValueFailure& failure) {
        fDocument.FailWithPlace(failure, number, *documents, session);
      }
    };
    fDocument.ForEach(*documents, session.Out(), session, print);
    return status;
  }

 private:
  static std::vector<std::string> TypeNames() {
    std::vector<std::string> names;
    for (const POSType type : kPOSTypes) {
      if (const char* const name = TypeName(type)) names.emplace_back(name);
    }
    return names;
  }

  // What --type calls a kind; null for one that no document holds.
  static constexpr const char* TypeName(POSType type) {
    switch (type) {
      case kPOSNumber:
        return "number";
      case kPOSString:
        return "string";
      case kPOSUnicodeString:
        return "unicode";
      case kPOSBinData:
        return "binary";
      case kPOSRawPointer:
        return nullptr;
      case kPOSArray:
        return "array";
      case kPOSDict:
        return "dict";
    }
    return nullptr;
  }

  // Returns false if a path has no value, or one of another kind than --type.
  bool PrintValues(CPOSObject root, const std::string& name, Session& session) const {
    bool hasAll = true;
    for (const std::string& argument : fPaths) {
      const Path path(argument);
      const auto [value, place] = Find(root, path, session.Loss());
      if (!value.IsNull() && HasType(value, session.Loss())) {
        PrintValue(value, name, place, session);
      } else if (value.IsNull() && fDefaultOption.IsGiven()) {
        session.Out().Put(fDefault);
      } else {
        const std::string where = "\"" + Printable(path.Text()) + "\"";
        session.Complain(Printable(name) + ": " +
                         (value.IsNull() ? "no value at " + where
                                         : where + " is " + KindText(value, session.Loss()) +
                                               ", not " + KindText(WantedType())));
        hasAll = false;
        continue;
      }
      session.Out().Put(fEndsWithZero ? '\0' : '\n');
    }
    return hasAll;
  }

  static std::pair<CPOSObject, ValuePath> Find(CPOSObject& root, const Path& path, LossMode loss) {
    try {
      const Slot slot(root, path, loss);
      return {slot.Value(), slot.Steps()};
    } catch (const PathError&) {
      return {};
    }
  }

  int WantedType() const {
    return *std::find_if(std::begin(kPOSTypes), std::end(kPOSTypes), [this](POSType type) {
      const char* const name = TypeName(type);
      return name && fType == name;
    });
  }
  bool HasType(const CPOSObject& value, LossMode loss) const {
    return fType.empty() || TypeOf(value, loss) == WantedType();
  }

  void PrintValue(const CPOSObject& value, const std::string& name, const ValuePath& place,
                  Session& session) const {
    try {
      if (fFormat.empty() && PrintPlainly(value, name, session.Out())) return;
      const Writer& writer = *FindFormat<Writer>(fFormat.empty() ? "json" : fFormat);
      writer.Write(value, name,
                   {.fOnOneLine = true,
                    .fRestoresKept = session.Loss() == LossMode::kKeep,
                    .fStyle = session.OutStyle()},
                   session.Out());
    } catch (const ValueFailure& failure) {
      throw failure.Within(place);
    }
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
  std::string fType;
  std::string fDefault;
  Option fDefaultOption;
  bool fEndsWithZero = false;
} gGetCommand;

}  // namespace

}  // namespace PosUtil
