#include "Harness.h"

namespace {

void ReadDocument(std::string_view document, Harness& harness) {
  KAP_T_MT::CKAPPositionableStream stream = harness.Stream(document);
  const KAP_T_MT::CPOSObject object = harness.Streamer().Deserialize(stream);
  Harness::Expect(object.IsNull() == (harness.TakeReports().size() == 1), "one report, or none");
  const long position = stream.Mark();
  const bool isInside = 0 <= position && position <= static_cast<long>(document.size());
  Harness::Expect(isInside, "the stream stands in the document");
  if (!object.IsNull()) harness.ExpectRoundTrip(object);
}

}  // namespace

// Documents: the input is one, and is the value of one.
KAP_FUZZ_TARGET(input, harness) {
  ReadDocument(input, harness);
  ReadDocument(std::string("POSStreamerTypeA_Version1.0 ").append(input), harness);
}
