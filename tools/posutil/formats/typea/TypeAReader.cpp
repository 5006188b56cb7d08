// SPDX-License-Identifier: MIT
// The TypeA format, read by the library's streamer.

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "POSStreamer.h"
#include "formats/DocumentSequence.h"
#include "formats/Format.h"
#include "formats/typea/StreamInput.h"

namespace PosUtil {

namespace {

constexpr char kUnknownVersion[] = "StreamerBase::LookupStreamer unrecognized version";
constexpr char kNotAString[] = "downcast from CPOSObject to CPOSString failed";

// What some reports of the library mean to a user who looks at the document. The others need no
// explanation.
constexpr struct {
  std::string_view fReport;
  const char* fMeaning;
} kMeanings[] = {
    {"getNextChar unexpected EOF", "the document ends inside the version name"},
    {kUnknownVersion, "a document must start with POSStreamerTypeA_Version1.0 and a space"},
    {"POSObjectStreamerImpl::Deserialize failure", "a zero character instead of a value"},
    {"unexpected EOF", "the document ends inside a value"},
    {"Cannot determine streaming params", "no value starts with this character"},
    {"Unexpected escape sequence", "unknown escape sequence"},
    {"GetChars ran out of input", "binary data is shorter than its declared length"},
    {"Unexpected chars after binary data", "binary data is longer than its declared length"},
    {kNotAString, "expected a string"},
    {"downcast from CPOSObject to CPOSNumber failed", "expected the length of the binary data"},
    {"missing dictionary value", "key without a value"},
    {"Cannot meaningfully read in a raw pointer (write is for debugging only)",
     "cannot read a raw pointer"},
};

std::string MeaningOf(const std::string& report) {
  for (const auto& [known, meaning] : kMeanings) {
    if (report == known) return meaning;
  }
  return report;
}

class TypeADocuments final : public DocumentSequence {
 public:
  TypeADocuments(const std::string& fileName, Extent extent, Text text, Session& session)
      : DocumentSequence(extent, text),
        fLibrary(session.TheLibrary()),
        fInput(fileName, extent, session.TheProgress(), session.Idle()) {}

  DocumentText LastText() const override { return fInput.Kept(); }

 private:
  bool SkipSpace() override { return fInput.SkipSpace(); }
  void KeepFromHere() override { fInput.KeepFromHere(); }
  void KeepNothing() override { fInput.KeepNothing(); }
  KAP_T_MT::CPOSObject ReadDocument() override {
    fBegin = fInput.Position();
    fInput.BeginDocument();
    KAP_T_MT::CPOSObject object = fStreamer.Deserialize(fInput.Stream());
    if (object.IsNull()) ThrowUnreadable();
    return object;
  }
  SyntaxError ErrorHere(const std::string& message) const override {
    return fInput.ErrorAt(fInput.Position(), message);
  }

  [[noreturn]] void ThrowUnreadable() {
    std::vector<std::string> reports = fLibrary.TakeReports();
    fInput.CheckFailure();
    const std::string report = reports.empty() ? "unreadable" : std::move(reports.front());
    const std::size_t count = fInput.Position();
    const std::string message = MeaningOf(report) + " (after " + std::to_string(count) + " bytes)";
    if (count == 0 || report.ends_with("unexpected EOF")) throw fInput.ErrorAfterText(message);
    throw fInput.ErrorAt(FaultOf(report, count), message);
  }

  // The fault is the last byte read, unless the token began earlier.
  std::size_t FaultOf(const std::string& report, std::size_t count) const {
    const std::size_t last = count - 1;
    if (report == kUnknownVersion) return fBegin;
    if (report == "malformed number") return StartOfNumber(last);
    if (report == "Unexpected escape sequence") return fInput.FindBack("\\", last - 1);
    if (report == "malformed Unicode string") {
      return fInput.FindBack("`", fInput.At(last) == '`' ? last - 1 : last);
    }
    return report == kNotAString ? StartOfValue(last) : last;
  }

  // The number ends at the byte at `last`, or in the space there.
  std::size_t StartOfNumber(std::size_t last) const {
    const std::size_t end = fInput.FindBack("#", last);
    const std::size_t before = fInput.FindBack(" \t\r\n[<{", end);
    return fInput.At(before + 1) == '#' ? before + 1 : end;
  }

  // Of a value that is not a container; where that is one, its end.
  std::size_t StartOfValue(std::size_t last) const {
    const char end = fInput.At(last);
    if (end == '`') return fInput.FindBack("`", last - 1);
    return end == ']' || end == '>' || end == '}' ? last : StartOfNumber(last);
  }

  Library& fLibrary;
  StreamInput fInput;
  std::size_t fBegin = 0;  // of the document
  const KAP_T_MT::CPOSStreamer fStreamer = KAP_T_MT::CPOSStreamer::New();
};

class TypeAReader final : public Reader {
 public:
  TypeAReader() : Reader(3, "typea", ".typea") {}

  std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent, Text text,
                                  Session& session) const override {
    return std::make_unique<TypeADocuments>(fileName, extent, text, session);
  }

  Recognition Recognize(std::string_view text, bool isAll) const override {
    text.remove_prefix(Skip(text, 0, kSpace));
    if (text.starts_with(kTag)) return Recognition::kYes;
    if (!kTag.starts_with(text)) return Recognition::kNo;
    // A short start may be a word of text notation.
    const bool isCut = text.size() >= kTag.find('_');
    return !isAll ? Recognition::kPerhaps : isCut ? Recognition::kYes : Recognition::kNo;
  }

  Token NextToken(std::string_view text, std::size_t at) const override {
    at = Skip(text, at, kSpace);
    if (text.substr(at).starts_with(kTag)) at = Skip(text, at + kTag.size(), kSpace);
    if (at == text.size()) return {Token::kEnd, at, at};
    if (const auto bracket = BracketToken(text, at, '<', '>')) return *bracket;
    switch (text[at]) {
      case '"':
      case '`':
        return {Token::kScalar, at, EndOfLiteral(text, at, text[at])};
      case '{': {
        const std::size_t type = Skip(text, at + 1, kSpace);
        return {Token::kScalar, at, EndOfLiteral(text, EndOfLiteral(text, type, '"') - 1, '}')};
      }
      default:
        return {Token::kScalar, at, std::min(text.find_first_of(kSpace, at), text.size())};
    }
  }

  std::string KeyOf(std::string_view token) const override {
    std::string key;
    for (std::size_t i = 1; i + 1 < token.size(); ++i) {
      const char c = token[i];
      if (c != '\\') {
        key += kSpace.find(c) == std::string_view::npos ? c : ' ';
      } else if (const char next = token[++i]; next >= '0' && next <= '9' && i + 2 < token.size()) {
        key += static_cast<char>((next - '0') * 64 + (token[i + 1] - '0') * 8 + token[i + 2] - '0');
        i += 2;
      } else {
        key += next == 'n' ? '\n' : next == 'r' ? '\r' : next == 't' ? '\t' : next;
      }
    }
    return key;
  }

 private:
  static constexpr std::string_view kSpace = " \t\r\n";
  static constexpr std::string_view kTag = "POSStreamerTypeA_Version1.0";
} gTypeAReader;

}  // namespace

}  // namespace PosUtil
