// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "kap/KAPMemory.h"
#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to a string of bytes in no particular encoding. It never changes, and equal strings
// share one text. See CPOSObject for ownership, errors and threads.
class CPOSString : public TPOSKind<POSStringInterface, "IsPOSString",
                                   "downcast from CPOSObject to CPOSString failed"> {
 public:
  using TPOSKind::TPOSKind;
  // Copies the text. CKAPError "invalid container", with a report, when the object cannot be made.
  explicit CPOSString(const char* text) : TPOSKind(Call<"NewPOSString">(text), KAPAdopt()) {}

  // The same for a text without a terminator. TOQException for one that contains a zero byte.
  explicit CPOSString(std::string_view text) : CPOSString(KAPTerminatedText(text).Text()) {}

  // The terminated text, borrowed: it lives as long as the object.
  const char* Get() const { return Call<"Get">(Handle()); }
};

}  // namespace KAP_T_MT
