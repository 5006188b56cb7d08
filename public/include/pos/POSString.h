#pragma once

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to an 8-bit string. See CPOSObject for ownership, errors and threads.
class CPOSString : public TPOSKind<POSStringInterface, "IsPOSString",
                                   "downcast from CPOSObject to CPOSString failed"> {
 public:
  using TPOSKind::TPOSKind;
  explicit CPOSString(const char* text) : TPOSKind(Call<"NewPOSString">(text), KAPAdopt()) {}

  // Lives as long as the object.
  const char* Get() const { return Call<"Get">(Handle()); }
};

}  // namespace KAP_T_MT
