// SPDX-License-Identifier: MIT
#include "Harness.h"

// Deep paths into a dictionary: no reports, and the same value with and without the leading dot.
KAP_FUZZ_TARGET(input, harness) {
  using namespace KAP_T_MT;
  // Kept for all inputs: reading it takes as long as the paths.
  static const CPOSDict dict(
      CPOSObject::CreateFromText("< a < b [10 [20 <c 3>] (x)] > () < b 1 > (x]) 2 (e f) [[[4]]] >",
                                 nullptr),
      false);
  const std::string path(input.substr(0, input.find('\0')));
  const CPOSObject found = dict.DeepGet(path.c_str(), true);
  const CPOSObject again = dict.DeepGet((path.starts_with('.') ? path : "." + path).c_str(), true);
  Expect(found.Handle() == again.Handle(), "a path has one value");
  Expect(harness.TakeReports().empty(), "there is no report");
}
