#pragma once

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to a number. See CPOSObject for ownership, errors and threads.
class CPOSNumber : public TPOSKind<POSNumberInterface, "IsPOSNumber",
                                   "downcast from CPOSObject to CPOSNumber failed"> {
 public:
  using TPOSKind::TPOSKind;
  explicit CPOSNumber(double value) : TPOSKind(Call<"NewPOSNumber">(value), KAPAdopt()) {}

  double Get() const { return Call<"Get">(Handle()); }
};

}  // namespace KAP_T_MT
