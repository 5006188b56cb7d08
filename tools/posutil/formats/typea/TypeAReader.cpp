// The TypeA format, read by the library's streamer.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "POSStreamer.h"
#include "formats/Format.h"
#include "formats/SourceReader.h"
#include "formats/typea/StreamInput.h"

namespace PosUtil {

namespace {

// What the library's reports mean to those who have only the document before them. Others tell it
// themselves.
constexpr struct {
  std::string_view fReport;
  const char* fMeaning;
} kMeanings[] = {
    {"getNextChar unexpected EOF", "the document ends before its version name does"},
    {"StreamerBase::LookupStreamer unrecognized version",
     "a document begins with POSStreamerTypeA_Version1.0 and a space"},
    {"POSObjectStreamerImpl::Deserialize failure", "a zero character instead of a value"},
    {"unexpected EOF", "the document ends within a value"},
    {"Cannot determine streaming params", "no value begins with this character"},
    {"Unexpected escape sequence", "an escape that has no meaning here"},
    {"GetChars ran out of input", "there is less binary data than its length tells"},
    {"Unexpected chars after binary data", "there is more binary data than its length tells"},
    {"downcast from CPOSObject to CPOSString failed", "a string is expected"},
    {"downcast from CPOSObject to CPOSNumber failed", "the length of the binary data is expected"},
    {"missing dictionary value", "a key without a value"},
    {"Cannot meaningfully read in a raw pointer (write is for debugging only)",
     "a raw pointer cannot be read"},
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
      : fExtent(extent), fLibrary(session.TheLibrary()), fInput(fileName, session.TheProgress()) {
    ReserveHeapFor(fInput.Size());
  }

  KAP_T_MT::CPOSObject Next() override {
    if (fIsAtEnd) return {};
    KAP_T_MT::CPOSObject object = fStreamer.Deserialize(fInput.Stream());
    if (object.IsNull()) ThrowUnreadable();
    fIsAtEnd = !fInput.SkipSpace();
    if (!fIsAtEnd && fExtent == Extent::kOne) {
      throw fInput.ErrorAt(fInput.Position(), "something follows the document (see --all)");
    }
    return object;
  }

 private:
  [[noreturn]] void ThrowUnreadable() {
    std::vector<std::string> reports = fLibrary.TakeReports();
    fInput.CheckFailure();
    const std::string report = reports.empty() ? "unreadable" : std::move(reports.front());
    const std::size_t count = fInput.Position();
    // The last byte that was read is the wrong one, unless one was missing.
    const bool isMissing = count == 0 || report.ends_with("unexpected EOF");
    throw fInput.ErrorAt(count - (isMissing ? 0 : 1),
                         MeaningOf(report) + " (after " + std::to_string(count) + " bytes)");
  }

  const Extent fExtent;
  Library& fLibrary;
  StreamInput fInput;
  const KAP_T_MT::CPOSStreamer fStreamer;
  bool fIsAtEnd = false;
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
