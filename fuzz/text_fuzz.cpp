#include "Harness.h"

// Text notation: the end is told for what is none; what is read can be copied, and written and
// read as a document.
KAP_FUZZ_TARGET(input, harness) {
  // In a block of its own size, so that AddressSanitizer stops who reads on.
  std::vector<char> text(input.begin(), input.end());
  text.push_back('\0');
  const char* end = "untouched";
  const KAP_T_MT::CPOSObject object = KAP_T_MT::CPOSObject::CreateFromText(text.data(), &end);
  if (object.IsNull()) {
    const bool isInside = text.data() <= end && end < text.data() + text.size();
    Harness::Expect(isInside, "the end lies in the text");
    return;
  }
  Harness::Expect(end == nullptr, "a complete text has no end");
  Harness::Expect(harness.TakeReports().empty(), "nothing is reported");
  Harness::Expect(object.Clone().IsEqual(object), "a copy is equal");
  harness.ExpectRoundTrip(object);
}
