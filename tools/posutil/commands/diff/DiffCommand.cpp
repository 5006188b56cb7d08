// SPDX-License-Identifier: MIT
#include <string>
#include <string_view>

#include "POSDict.h"
#include "base/Failure.h"
#include "base/ValueError.h"
#include "commands/Command.h"
#include "commands/diff/Comparison.h"
#include "commands/documents/FormatOption.h"
#include "commands/values/Values.h"
#include "files/InputFile.h"
#include "formats/json/JsonText.h"
#include "formats/paths/PathLines.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

// The value at a path, or an empty object. With LossMode::kKeep, see Unescaped, the path is that in
// JSON.
CPOSObject ValueAt(const CPOSObject& root, const ValuePath& path, LossMode loss) {
  CPOSObject value = root;
  for (const PathStep& step : path) {
    if (value.IsNull()) return value;
    if (loss == LossMode::kKeep) value = Unescaped(value);
    if (step.fIsIndex) {
      const CPOSArray array(value, true);
      value = array.IsNull() ? CPOSObject() : array.GetAt(step.fIndex, true);
    } else {
      const CPOSDict dict(value, true);
      value = dict.IsNull() ? CPOSObject() : dict.Get(step.fKey, true);
    }
  }
  return value;
}

// The two documents, and how their differences are printed.
class DiffOutput {
 public:
  struct Document {
    std::string fName;
    CPOSObject fObject;
  };

  DiffOutput(const Document& a, const Document& b, Session& session)
      : fA(a), fB(b), fSession(session), fOut(session.Out()) {}
  DiffOutput(const DiffOutput&) = delete;
  DiffOutput& operator=(const DiffOutput&) = delete;
  virtual ~DiffOutput() = default;

  virtual void Put(const Difference& difference) = 0;
  virtual void End() {}
  bool HasDifferences() const { return fHasDifferences; }

 protected:
  const Document& fA;
  const Document& fB;
  Session& fSession;
  Output& fOut;
  bool fHasDifferences = false;
};

class TextDiff final : public DiffOutput {
 public:
  using DiffOutput::DiffOutput;

  void Put(const Difference& difference) override {
    fHasDifferences = true;
    if (difference.fKind != Difference::kAdded) PutLines("- ", fA, difference.fPath);
    if (difference.fKind != Difference::kRemoved) PutLines("+ ", fB, difference.fPath);
  }

 private:
  void PutLines(std::string_view sign, const Document& document, const ValuePath& path) {
    PathLines lines({.fMargin = sign,
                     .fRestoresKept = fSession.Loss() == LossMode::kKeep,
                     .fStyle = fSession.OutStyle()},
                    path, fOut);
    const CPOSObject value = ValueAt(document.fObject, path, fSession.Loss());
    value.IsNull() ? lines.EmptySlot() : Visit(value, document.fName, lines);
  }
};

// A JSON Patch (RFC 6902), with an operation on each line.
class JsonDiff final : public DiffOutput {
 public:
  using DiffOutput::DiffOutput;

  void Put(const Difference& difference) override {
    static constexpr const char* kOperations[] = {"remove", "add", "replace"};
    fOut.Put(fHasDifferences ? ",\n  {\"op\":\"" : "[\n  {\"op\":\"");
    fHasDifferences = true;
    fOut.Put(kOperations[difference.fKind]);
    fOut.Put("\",\"path\":");
    PutJsonString(fOut, JsonPointer(difference.fPatchPath).c_str());
    if (difference.fKind != Difference::kRemoved) {
      fOut.Put(",\"value\":");
      PutValue(difference.fPath);
    }
    fOut.Put('}');
  }
  void End() override { fOut.Put(fHasDifferences ? "\n]\n" : "[]\n"); }

 private:
  void PutValue(const ValuePath& path) {
    const CPOSObject value = ValueAt(fB.fObject, path, fSession.Loss());
    if (value.IsNull()) return fOut.Put("null");
    try {
      FindFormat<Writer>("json")->Write(
          value, fB.fName,
          {.fOnOneLine = true, .fRestoresKept = fSession.Loss() == LossMode::kKeep, .fStyle = {}},
          fOut);
    } catch (const ValueFailure& failure) {
      throw failure.Within(path);
    }
  }
};

class DiffCommand final : public Command {
 public:
  DiffCommand() : Command(8, "diff", "Compares two documents") {}

  void Declare(Options& options) override {
    options.Argument("A", fA, "The first document, - for standard input").File();
    options.Argument("B", fB, "The second document").File();
    DeclareFrom(options, "--from", fFormat, "A");
    DeclareFrom(options, "--from-b", fFormatB, "B");
    DeclareLoss(options, fLoss);
    options
        .Text("--format", fOutput, "Lines with a path and a value (the default), or a JSON Patch")
        .OneOf({"text", "json"});
    options.Footer(
        "Prints - PATH = VALUE for what only A has, and + PATH = VALUE for what only B has. The\n"
        "documents may have different formats: values count, not their text. Strings and Unicode\n"
        "strings differ; 1 and 1.0 do not. In an array, what is left between the equal values at\n"
        "its ends is compared index by index. What property objects do not have is compared as it\n"
        "is: --loss=keep is the default. Exit status: 0 if the documents are the same, 1 if they\n"
        "differ, 3 if one cannot be read.\n\n"
        "Examples:\n"
        "  posutil diff old.json new.json\n"
        "  posutil diff --format json old.json new.json > patch.json");
  }

  ExitStatus Run(Session& session) override {
    if (fA == "-" && fB == "-") throw Failure("A and B cannot both be standard input", kExitUsage);
    session.Loss() = LossModeOf(fLoss, LossMode::kKeep);
    const Reader& formatA = FormatOfInput(fFormat, fA, "--from");
    const Reader& formatB = FormatOfInput(fFormatB, fB, "--from-b");
    const DiffOutput::Document a = Read(formatA, fA, session);
    const DiffOutput::Document b = Read(formatB, fB, session);
    if (fOutput == "json") {
      JsonDiff output(a, b, session);
      return Compare(a, b, output, session);
    }
    TextDiff output(a, b, session);
    return Compare(a, b, output, session);
  }

 private:
  static DiffOutput::Document Read(const Reader& format, const std::string& file,
                                   Session& session) {
    return {InputName(file), OpenDocuments(format, file, Extent::kOne, session)->Next()};
  }

  static ExitStatus Compare(const DiffOutput::Document& a, const DiffOutput::Document& b,
                            DiffOutput& output, Session& session) {
    const bool hasKept = session.Loss() == LossMode::kKeep;
    ValueNumbers numbers;
    const ValueTree treeA(a.fObject, a.fName, hasKept, numbers);
    const ValueTree treeB(b.fObject, b.fName, hasKept, numbers);
    session.CheckReports();  // a value that cannot be read is not a difference
    Comparison(treeA, treeB).Run([&](const Difference& difference) { output.Put(difference); });
    output.End();
    session.KeepToEnd(a.fObject);
    session.KeepToEnd(b.fObject);
    return output.HasDifferences() ? kExitNegative : kExitSuccess;
  }

  std::string fA;
  std::string fB;
  std::string fFormat;
  std::string fFormatB;
  std::string fLoss;
  std::string fOutput;
} gDiffCommand;

}  // namespace

}  // namespace PosUtil
