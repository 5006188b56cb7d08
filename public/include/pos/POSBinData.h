#pragma once

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to typed binary data. See CPOSObject for ownership, errors and threads.
class CPOSBinData : public TPOSKind<POSBinDataInterface, "IsPOSBinData",
                                    "downcast from CPOSObject to CPOSBinData failed"> {
 public:
  using TPOSKind::TPOSKind;
  // Copies `size` bytes.
  CPOSBinData(const char* typeName, const unsigned char* data, unsigned long size)
      : TPOSKind(Call<"NewPOSBinData">(typeName, data, size), KAPAdopt()) {}

  // Name and bytes live as long as the object.
  const char* GetTypeName() const { return Call<"GetTypeName">(Handle()); }
  const unsigned char* GetBinData() const { return Call<"GetBinData">(Handle()); }
  unsigned long GetSize() const { return Call<"GetSize">(Handle()); }
};

}  // namespace KAP_T_MT
