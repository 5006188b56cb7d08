// SPDX-License-Identifier: MIT
#include "commands/documents/FormatOption.h"

#include <utility>
#include <vector>

#include "base/Failure.h"
#include "base/Printable.h"
#include "files/InputFile.h"

namespace PosUtil {

namespace {

template <class Format>
std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const Format* format : Format::All()) names.emplace_back(format->kName);
  return names;
}

void DeclareFormat(Options& options, const char* name, std::string& format,
                   const std::string& description, const std::vector<std::string>& names) {
  options.Text(name, format, description).OneOf(names);
}

std::string ListOfEndings() {
  std::string text;
  for (const Reader* reader : Reader::All()) {
    text += (text.empty() ? "" : "; ") + std::string(reader->kName) + " for " +
            std::string(reader->kEndings);
  }
  return text;
}

// Checks the reports of the library after each document.
class CheckedDocuments final : public Documents {
 public:
  CheckedDocuments(std::unique_ptr<Documents> documents, const std::string& name, Library& library)
      : fDocuments(std::move(documents)), fName(name), fLibrary(library) {}

  KAP_T_MT::CPOSObject Next() override {
    try {
      KAP_T_MT::CPOSObject object = fDocuments->Next();
      fLibrary.CheckReports(fName);
      return object;
    } catch (const Failure&) {
      fLibrary.CheckReports(fName);  // a report is the cause of the failure
      throw;
    }
  }
  void ReportLosses() override { fDocuments->ReportLosses(); }
  DocumentText LastText() const override { return fDocuments->LastText(); }

 private:
  const std::unique_ptr<Documents> fDocuments;
  const std::string fName;
  Library& fLibrary;
};

}  // namespace

void DeclareFrom(Options& options, const char* option, std::string& format, const char* file) {
  DeclareFormat(options, option, format,
                "Format of " + std::string(file) + "; default: by its ending (" + ListOfEndings() +
                    "), then by its content",
                Names<Reader>());
}

void DeclareTo(Options& options, std::string& format, const char* description) {
  DeclareFormat(options, "--to", format, description, Names<Writer>());
}

void DeclareToOfFile(Options& options, std::string& format, const char* description) {
  std::vector<std::string> names = Names<Reader>();
  std::erase_if(names, [](const std::string& name) { return !FindFormat<Writer>(name); });
  DeclareFormat(options, "--to", format, description, names);
}

void DeclareLoss(Options& options, std::string& loss) {
  options
      .Text("--loss", loss,
            "What JSON loses as property objects: warn about it (the default), make it an "
            "error, or keep the values in dictionaries")
      .OneOf({"warn", "error", "keep"});
}

LossMode LossModeOf(const std::string& loss, LossMode byDefault) {
  if (loss.empty()) return byDefault;
  if (loss == "warn") return LossMode::kWarn;
  return loss == "keep" ? LossMode::kKeep : LossMode::kError;
}

const Reader& FormatOfInput(const std::string& format, const std::string& file, const char* option,
                            Extent extent) {
  const Reader* const reader = format.empty() ? Reader::ForFile(file) : FindFormat<Reader>(format);
  if (reader) return *reader;
  if (Reader::IsBlank(file)) {
    if (extent == Extent::kAll) return *FindFormat<Reader>("json");
    throw Failure(Printable(InputName(file)) + ": the input is empty");
  }
  throw Failure(Printable(InputName(file)) +
                    ": cannot tell the format from the file name or the content; use " + option,
                kExitUsage);
}

const Reader& FormatOfOutput(const std::string& format, const std::string& file,
                             const char* option) {
  const Reader* const reader =
      format.empty() ? Reader::ForEnding(file) : FindFormat<Reader>(format);
  if (reader) return *reader;
  throw Failure(Printable(file) + ": cannot tell the format from the file name; use " + option,
                kExitUsage);
}

std::unique_ptr<Documents> OpenDocuments(const Reader& reader, const std::string& file,
                                         Extent extent, Session& session, Text text) {
  session.TheLibrary();
  return WithReports(reader.Open(file, extent, text, session), InputName(file), session);
}

std::unique_ptr<Documents> WithReports(std::unique_ptr<Documents> documents,
                                       const std::string& name, Session& session) {
  return std::make_unique<CheckedDocuments>(std::move(documents), name, session.TheLibrary());
}

}  // namespace PosUtil
