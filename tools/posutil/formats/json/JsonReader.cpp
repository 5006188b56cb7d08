// SPDX-License-Identifier: MIT
// The JSON reader. It goes piece by piece from the text to the property object, with no other form
// in between, and holds only a window of the text. See TaggedJson.h for values that one side does
// not have; null becomes an empty slot of an array.

#include <algorithm>

#include "files/InputWindow.h"
#include "formats/Format.h"
#include "formats/json/JsonBuilder.h"
#include "formats/json/JsonScanner.h"
#include "formats/json/JsonText.h"

namespace PosUtil {

namespace {

class JsonDocuments final : public Documents {
 public:
  JsonDocuments(const std::string& fileName, Extent extent, Text text, Session& session)
      : fExtent(extent),
        fText(text),
        fSession(session),
        fInput(fileName, session.TheProgress(), session.Idle()),
        fScanner(fInput, fBuilder, session.Loss(), fLosses) {
    if (session.Loss() == LossMode::kKeep) fBuilder.EscapeKept();
  }

  KAP_T_MT::CPOSObject Next() override {
    try {
      return ReadNext();
    } catch (const Failure&) {
      // The documents before are written. With an error for each loss, the failure may be one.
      if (fExtent == Extent::kAll && fSession.Loss() != LossMode::kError) {
        fSession.ReportLosses(fLosses);
      }
      throw;
    }
  }

  DocumentText LastText() const override {
    return {fInput.Part(), fInput.KeptFrom(), fInput.BeforeKept()};
  }

 private:
  KAP_T_MT::CPOSObject ReadNext() {
    if (fExtent == Extent::kAll ? !fScanner.SkipSpace() : fIsRead) {
      fSession.ReportLosses(fLosses);
      return {};
    }
    if (fText == Text::kKept) fScanner.KeepFromHere();
    fScanner.ReadDocument();
    fIsRead = true;
    if (fExtent == Extent::kOne && fScanner.SkipSpace()) {
      throw fScanner.ErrorHere("unexpected text after the document (see --all)");
    }
    // With several documents, warnings wait for the last one, but an error keeps this one from
    // being written.
    if (fExtent == Extent::kOne || fSession.Loss() == LossMode::kError) {
      fSession.ReportLosses(fLosses);
    }
    return fBuilder.Take();
  }

  const Extent fExtent;
  const Text fText;
  Session& fSession;
  InputWindow fInput;
  JsonBuilder fBuilder;
  Losses fLosses;
  JsonScanner fScanner;
  bool fIsRead = false;
};

class JsonReader final : public Reader {
 public:
  JsonReader() : Reader(2, "json", ".json .jsonl") {}

  std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent, Text text,
                                  Session& session) const override {
    return std::make_unique<JsonDocuments>(fileName, extent, text, session);
  }

  Token NextToken(std::string_view text, std::size_t at) const override {
    at = Skip(text, at, " \t\r\n,:");
    if (at == text.size()) return {Token::kEnd, at, at};
    switch (text[at]) {
      case '{':
        return {Token::kBeginDict, at, at + 1};
      case '}':
        return {Token::kEndDict, at, at + 1};
      case '[':
        return {Token::kBeginArray, at, at + 1};
      case ']':
        return {Token::kEndArray, at, at + 1};
      case '"':
        return {Token::kScalar, at, EndOfLiteral(text, at, '"')};
      default:
        return {Token::kScalar, at, std::min(text.find_first_of(" \t\r\n,:]}", at), text.size())};
    }
  }

  std::string KeyOf(std::string_view token) const override { return JsonUnescaped(token); }
} gJsonReader;

}  // namespace

}  // namespace PosUtil
