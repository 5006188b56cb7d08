// SPDX-License-Identifier: MIT
// The JSON reader. It goes piece by piece from the text to the property object, with no other form
// in between, and holds only a window of the text. See TaggedJson.h for values that one side does
// not have; null becomes an empty slot of an array.

#include "formats/json/JsonReader.h"

#include <algorithm>
#include <utility>

#include "files/InputWindow.h"
#include "formats/DocumentSequence.h"
#include "formats/Format.h"
#include "formats/json/JsonBuilder.h"
#include "formats/json/JsonRecognition.h"
#include "formats/json/JsonScanner.h"
#include "formats/json/JsonText.h"
#include "formats/json/TaggedJson.h"

namespace PosUtil {

namespace {

class JsonDocuments final : public DocumentSequence {
 public:
  JsonDocuments(const std::string& fileName, Extent extent, Text text, Nulls nulls,
                Session& session)
      : JsonDocuments(InputWindow(fileName, session.TheProgress(), session.Idle()), extent, text,
                      nulls, session) {}
  JsonDocuments(InputWindow input, Extent extent, Text text, Nulls nulls, Session& session)
      : DocumentSequence(extent, text),
        fSession(session),
        fInput(std::move(input)),
        fScanner(fInput, fBuilder, session.Loss(), nulls, fLosses) {
    if (session.Loss() == LossMode::kKeep) fBuilder.EscapeKept();
  }

  KAP_T_MT::CPOSObject Next() override {
    try {
      if (std::exchange(fMustSkip, false)) fScanner.SkipDocument();
      KAP_T_MT::CPOSObject object = DocumentSequence::Next();
      // With several documents, warnings wait for the last one, but an error keeps this one from
      // being written.
      if (object.IsNull() || kExtent == Extent::kOne || fSession.Loss() == LossMode::kError) {
        ReportLosses();
      }
      return object;
    } catch (const Failure& failure) {
      fMustSkip = dynamic_cast<const UnheldValue*>(&failure);
      // The documents before are written. With an error for each loss, the failure may be one.
      if (kExtent == Extent::kAll && fSession.Loss() != LossMode::kError) ReportLosses();
      throw;
    }
  }

  void ReportLosses() override { fSession.ReportLosses(fLosses); }

  DocumentText LastText() const override {
    return {fInput.Part(), fInput.KeptFrom(), fInput.BeforeKept()};
  }

 private:
  bool SkipSpace() override { return fScanner.SkipSpace(); }
  void KeepFromHere() override { fScanner.KeepFromHere(); }
  void KeepNothing() override { fInput.KeepNothing(); }
  KAP_T_MT::CPOSObject ReadDocument() override {
    fScanner.ReadDocument();
    return fBuilder.Take();
  }
  SyntaxError ErrorHere(const std::string& message) const override {
    return fScanner.ErrorHere(message);
  }

  Session& fSession;
  InputWindow fInput;
  JsonBuilder fBuilder;
  Losses fLosses;
  JsonScanner fScanner;
  bool fMustSkip = false;
};

class JsonReader final : public Reader {
 public:
  JsonReader() : Reader(2, "json", ".json .jsonl") {}

  std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent, Text text,
                                  Session& session) const override {
    return std::make_unique<JsonDocuments>(fileName, extent, text, Nulls::kByLoss, session);
  }

  Recognition Recognize(std::string_view text, bool isAll) const override {
    return RecognizeJson(text, isAll);
  }

  Token NextToken(std::string_view text, std::size_t at) const override {
    at = Skip(text, at, " \t\r\n,:");
    if (at == text.size()) return {Token::kEnd, at, at};
    if (const auto bracket = BracketToken(text, at, '{', '}')) return *bracket;
    const bool isString = text[at] == '"';
    return {Token::kScalar, at,
            isString ? EndOfLiteral(text, at, '"')
                     : std::min(text.find_first_of(" \t\r\n,:]}", at), text.size())};
  }

  std::string KeyOf(std::string_view token) const override { return JsonUnescaped(token); }
  std::string WrapperKey() const override { return kObjectTag; }
} gJsonReader;

}  // namespace

std::unique_ptr<Documents> OpenJsonWithNulls(const std::string& fileName, Session& session) {
  return std::make_unique<JsonDocuments>(fileName, Extent::kOne, Text::kKept, Nulls::kMarked,
                                         session);
}

std::unique_ptr<Documents> OpenJsonText(std::string name, std::string_view text, Session& session) {
  return std::make_unique<JsonDocuments>(InputWindow(std::move(name), text, session.TheProgress()),
                                         Extent::kOne, Text::kKept, Nulls::kMarked, session);
}

}  // namespace PosUtil
