// The TypeA format, read by the library's streamer.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "POSStreamer.h"
#include "formats/Format.h"
#include "formats/typea/StreamInput.h"

namespace PosUtil {

namespace {

// What some reports of the library mean to a user who looks at the document. The others need no
// explanation.
constexpr struct {
  std::string_view fReport;
  const char* fMeaning;
} kMeanings[] = {
    {"getNextChar unexpected EOF", "the document ends inside the version name"},
    {"StreamerBase::LookupStreamer unrecognized version",
     "a document must start with POSStreamerTypeA_Version1.0 and a space"},
    {"POSObjectStreamerImpl::Deserialize failure", "a zero character instead of a value"},
    {"unexpected EOF", "the document ends inside a value"},
    {"Cannot determine streaming params", "no value starts with this character"},
    {"Unexpected escape sequence", "unknown escape sequence"},
    {"GetChars ran out of input", "binary data is shorter than its declared length"},
    {"Unexpected chars after binary data", "binary data is longer than its declared length"},
    {"downcast from CPOSObject to CPOSString failed", "expected a string"},
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

class TypeADocuments final : public Documents {
 public:
  TypeADocuments(const std::string& fileName, Extent extent, Session& session)
      : fExtent(extent),
        fLibrary(session.TheLibrary()),
        fInput(fileName, session.TheProgress(), session.Idle()) {}

  KAP_T_MT::CPOSObject Next() override {
    if (fExtent == Extent::kAll ? !fInput.SkipSpace() : fIsRead) return {};
    fIsRead = true;
    KAP_T_MT::CPOSObject object = fStreamer.Deserialize(fInput.Stream());
    if (object.IsNull()) ThrowUnreadable();
    if (fExtent == Extent::kOne && fInput.SkipSpace()) {
      throw fInput.ErrorAt(fInput.Position(), "unexpected text after the document (see --all)");
    }
    return object;
  }

 private:
  [[noreturn]] void ThrowUnreadable() {
    std::vector<std::string> reports = fLibrary.TakeReports();
    fInput.CheckFailure();
    const std::string report = reports.empty() ? "unreadable" : std::move(reports.front());
    const std::size_t count = fInput.Position();
    // The error is the last byte read, unless a byte is missing.
    const bool isMissing = count == 0 || report.ends_with("unexpected EOF");
    throw fInput.ErrorAt(count - (isMissing ? 0 : 1),
                         MeaningOf(report) + " (after " + std::to_string(count) + " bytes)");
  }

  const Extent fExtent;
  Library& fLibrary;
  StreamInput fInput;
  const KAP_T_MT::CPOSStreamer fStreamer;
  bool fIsRead = false;
};

class TypeAReader final : public Reader {
 public:
  TypeAReader() : Reader(3, "typea", ".typea") {}

  std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent,
                                  Session& session) const override {
    return std::make_unique<TypeADocuments>(fileName, extent, session);
  }
} gTypeAReader;

}  // namespace

}  // namespace PosUtil
