// SPDX-License-Identifier: MIT
#pragma once

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to a number, which never changes: to change a value, create a new number and store it
// instead. See CPOSObject for ownership, errors and threads.
class CPOSNumber : public TPOSKind<POSNumberInterface, "IsPOSNumber",
                                   "downcast from CPOSObject to CPOSNumber failed"> {
 public:
  using TPOSKind::TPOSKind;
  // CKAPError "invalid container", with a report, when the object cannot be made.
  explicit CPOSNumber(double value) : TPOSKind(Call<"NewPOSNumber">(value), KAPAdopt()) {}

  // The value. 0, with a report, for an empty reference.
  double Get() const { return Call<"Get">(Handle()); }
};

}  // namespace KAP_T_MT
