#include "commands/verdicts/VerdictPrinter.h"

#include "base/Printable.h"
#include "formats/json/JsonText.h"

namespace PosUtil {

namespace {

std::string Amount(std::size_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// Prints a line for each message, and a line of counts.
class TextPrinter final : public VerdictPrinter {
 public:
  using VerdictPrinter::VerdictPrinter;

  void Begin() override {}

  void Print(const std::string& name, const Verdict& verdict) override {
    for (const std::string& message : verdict.fMessages)
      fOut.Put(MessageLine(name, message) + "\n");
    if (!verdict.fIsValid && verdict.fMessages.empty()) {
      fOut.Put(Printable(name) + ": not valid, without a message\n");
    }
  }

  void PrintUnchecked(const std::string& /*name*/, const std::string& /*reason*/) override {}

  void End(const VerdictCounts& counts) override {
    std::string line = Amount(counts.fValid + counts.fInvalid, "file") +
                       " checked: " + std::to_string(counts.fValid) + " valid, " +
                       std::to_string(counts.fInvalid) + " not valid, " +
                       Amount(counts.fMessages, "message");
    if (counts.fUnchecked > 0) line += "; " + Amount(counts.fUnchecked, "file") + " not checked";
    fOut.Put(line + "\n");
  }
};

// Prints one JSON object, with a line for each file.
class JsonPrinter final : public VerdictPrinter {
 public:
  using VerdictPrinter::VerdictPrinter;

  void Begin() override { fOut.Put("{\"files\":["); }

  void Print(const std::string& name, const Verdict& verdict) override {
    BeginFile(name, verdict.fIsValid ? "true" : "false");
    const char* separator = "";
    for (const std::string& message : verdict.fMessages) {
      fOut.Put(separator);
      PutText(message);
      separator = ",";
    }
    fOut.Put("]}");
  }

  void PrintUnchecked(const std::string& name, const std::string& reason) override {
    BeginFile(name, "null");
    fOut.Put("],\"error\":");
    PutJsonString(fOut, reason.c_str());
    fOut.Put('}');
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
  void BeginFile(const std::string& name, const char* isValid) {
    fOut.Put(fIsFirst ? "\n{\"file\":" : ",\n{\"file\":");
    fIsFirst = false;
    PutText(name);
    fOut.Put(std::string(",\"valid\":") + isValid + ",\"messages\":[");
  }

  void PutCount(const char* name, std::size_t count) {
    fOut.Put(std::string(",\"") + name + "\":" + std::to_string(count));
  }

  // Names and messages may hold bytes that JSON cannot hold.
  void PutText(const std::string& text) {
    std::string printable;
    AppendPrintable(printable, text);
    PutJsonString(fOut, printable.c_str());
  }

  bool fIsFirst = true;
};

}  // namespace

std::unique_ptr<VerdictPrinter> VerdictPrinter::New(const std::string& form, Output& out) {
  if (form == kJson) return std::make_unique<JsonPrinter>(out);
  return std::make_unique<TextPrinter>(out);
}

}  // namespace PosUtil
