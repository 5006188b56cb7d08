// SPDX-License-Identifier: MIT
#include "Harness.h"

namespace {

void ReadDocument(std::string_view document, Harness& harness) {
  KAP_T_MT::CKAPPositionableStream stream = harness.Stream(document);
  const KAP_T_MT::CPOSObject object = harness.Streamer().Deserialize(stream);
  Expect(object.IsNull() == (harness.TakeReports().size() == 1), "a failure has one report");
  const long position = stream.Mark();
  const bool isInside = 0 <= position && position <= static_cast<long>(document.size());
  Expect(isInside, "the position is inside the document");
  if (!object.IsNull()) harness.ExpectRoundTrip(object);
}

}  // namespace

// TypeA documents: the input is a document, then the value in a document.
KAP_FUZZ_TARGET(input, harness) {
  ReadDocument(input, harness);
  ReadDocument(std::string("POSStreamerTypeA_Version1.0 ").append(input), harness);
}
