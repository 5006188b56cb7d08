// SPDX-License-Identifier: MIT
#include "Harness.h"

// Text notation: an error has a position; a parsed object can be cloned, and round-trips through a
// document.
KAP_FUZZ_TARGET(input, harness) {
  // In a block of the exact size, so that AddressSanitizer finds reads past the end.
  std::vector<char> text(input.begin(), input.end());
  text.push_back('\0');
  const char* end = "untouched";
  const KAP_T_MT::CPOSObject object = KAP_T_MT::CPOSObject::CreateFromText(text.data(), &end);
  if (object.IsNull()) {
    const bool isInside = text.data() <= end && end < text.data() + text.size();
    Expect(isInside, "the position is inside the text");
    return;
  }
  Expect(end == nullptr, "a complete text has no error position");
  Expect(harness.TakeReports().empty(), "there is no report");
  Expect(object.Clone().IsEqual(object), "a clone is equal");
  harness.ExpectRoundTrip(object);
}
