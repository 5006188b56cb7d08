// SPDX-License-Identifier: MIT
#include "commands/verdicts/VerdictPrinter.h"

#include <algorithm>
#include <string_view>

#include "base/Printable.h"
#include "base/Utf.h"
#include "formats/json/JsonText.h"

namespace PosUtil {

namespace {

std::string Amount(std::size_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// Prints lines for each message, and a line of counts.
class TextPrinter final : public VerdictPrinter {
 public:
  TextPrinter(const Style& style, Output& out) : VerdictPrinter(out), fStyle(style) {}

  void Begin() override {}

  void Print(const CheckedName& name, const Verdict& verdict) override {
    fHasDocuments |= name.fDocument > 0;
    for (const VerdictMessage& message : verdict.fMessages) {
      fOut.Put(fStyle.Message(MessageLines(name.fFile, name.fSchema, message), fStyle.fError,
                              Style::Lines::kFirst));
      fOut.Put('\n');
    }
    if (!verdict.fIsValid && verdict.fMessages.empty() && verdict.fUnshown == 0) {
      const std::string line =
          Printable(name.fFile) +
          (fHasDocuments ? ", document " + std::to_string(name.fDocument) : "") +
          ": not valid, without a message";
      fOut.Put(fStyle.Message(line, fStyle.fError, Style::Lines::kFirst) + "\n");
    }
  }

  void PrintUnchecked(const CheckedName& name, const std::string& /*reason*/) override {
    fHasDocuments |= name.fDocument > 0;
  }

  void End(const VerdictCounts& counts) override {
    if (counts.fMessages > counts.fPrinted) {
      fOut.Put(Amount(counts.fMessages - counts.fPrinted, "more message") +
               " (--max-errors 0 prints all)\n");
    }
    const char* const noun = fHasDocuments ? "document" : "file";
    std::string line = Amount(counts.fValid + counts.fInvalid, noun) +
                       " checked: " + std::to_string(counts.fValid) + " valid, " +
                       std::to_string(counts.fInvalid) + " not valid, " +
                       Amount(counts.fMessages, "message");
    if (counts.fUnchecked > 0) line += "; " + Amount(counts.fUnchecked, noun) + " not checked";
    fOut.Put(line + "\n");
  }

 private:
  const Style fStyle;
  bool fHasDocuments = false;
};

// Prints one JSON object, with lines for each document.
class JsonPrinter final : public VerdictPrinter {
 public:
  using VerdictPrinter::VerdictPrinter;

  void Begin() override { fOut.Put("{\"files\":["); }

  void Print(const CheckedName& name, const Verdict& verdict) override {
    BeginFile(name, verdict.fIsValid ? "true" : "false");
    const char* separator = "\n ";
    for (const VerdictMessage& message : verdict.fMessages) {
      fOut.Put(separator);
      PutMessage(name, message);
      separator = ",\n ";
    }
    fOut.Put("]}");
  }

  void PrintUnchecked(const CheckedName& name, const std::string& reason) override {
    BeginFile(name, "null");
    fOut.Put("]");
    PutMember("error", reason);
    fOut.Put('}');
  }

  void PrintFailure(const std::string& reason) override {
    fOut.Put("{\"files\":[]");
    PutMember("error", reason);
    fOut.Put("}\n");
  }

  void End(const VerdictCounts& counts) override {
    fOut.Put("\n]");
    PutCount("valid", counts.fValid);
    PutCount("invalid", counts.fInvalid);
    PutCount("unchecked", counts.fUnchecked);
    PutCount("messages", counts.fMessages);
    fOut.Put("}\n");
  }

 private:
  void BeginFile(const CheckedName& name, const char* isValid) {
    fOut.Put(fIsFirst ? "\n{" : ",\n{");
    fIsFirst = false;
    PutName(name);
    fOut.Put(std::string(",\"valid\":") + isValid + ",\"messages\":[");
  }

  void PutName(const CheckedName& name) {
    fOut.Put("\"file\":");
    PutText(name.fFile);
    if (name.fDocument > 0) PutCount("document", name.fDocument);
  }

  void PutMessage(const CheckedName& name, const VerdictMessage& message) {
    fOut.Put('{');
    PutName(name);
    if (message.fPlace) PutPlace(*message.fPlace);
    PutMember("path", message.fPath);
    if (!message.fType.empty()) PutMember("type", message.fType);
    PutMember("message", message.fText);
    if (!message.fFound.empty()) PutMember("found", message.fFound);
    if (message.fOtherAlternatives > 0) PutCount("others", message.fOtherAlternatives);
    if (message.fRule) {
      fOut.Put(",\"rule\":{\"file\":");
      PutText(name.fSchema);
      PutPlace(*message.fRule);
      fOut.Put('}');
    }
    fOut.Put('}');
  }

  void PutPlace(const TextPlace& place) {
    PutCount("line", place.fLine);
    PutCount("column", place.fColumn);
  }

  void PutCount(const char* name, std::size_t count) {
    fOut.Put(std::string(",\"") + name + "\":" + std::to_string(count));
  }

  void PutMember(const char* name, const std::string& text) {
    fOut.Put(std::string(",\"") + name + "\":");
    PutText(text);
  }

  // Names and messages may hold bytes that JSON cannot hold: they become escapes.
  void PutText(std::string_view text) {
    std::string valid;
    while (!text.empty()) {
      const std::size_t length = Utf8CharacterLength(text);
      const std::string_view next = text.substr(0, std::max<std::size_t>(length, 1));
      length > 0 ? void(valid += next) : AppendPrintable(valid, next);
      text.remove_prefix(next.size());
    }
    PutJsonString(fOut, valid.c_str());
  }

  bool fIsFirst = true;
};

}  // namespace

std::unique_ptr<VerdictPrinter> VerdictPrinter::New(const std::string& form, const Style& style,
                                                    Output& out) {
  if (form == kJson) return std::make_unique<JsonPrinter>(out);
  return std::make_unique<TextPrinter>(style, out);
}

}  // namespace PosUtil
