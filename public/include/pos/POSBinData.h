// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "kap/KAPMemory.h"
#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to binary data: bytes with the name of their type. It never changes.
//
//   const CPOSBinData icon("image/png", bytes.data(), bytes.size());
//   Draw(icon.GetBinData(), icon.GetSize());           // while `icon` or a copy of it lives
//
// See CPOSObject for ownership, errors and threads.
class CPOSBinData : public TPOSKind<POSBinDataInterface, "IsPOSBinData",
                                    "downcast from CPOSObject to CPOSBinData failed"> {
 public:
  using TPOSKind::TPOSKind;
  // Copies `size` bytes; `data` may be null when there are none. CKAPError "invalid container",
  // with a report, when the object cannot be made.
  CPOSBinData(const char* typeName, const unsigned char* data, unsigned long size)
      : TPOSKind(Call<"NewPOSBinData">(typeName, data, size), KAPAdopt()) {}

  // The same for a name without a terminator. TOQException for one that contains a zero byte.
  CPOSBinData(std::string_view typeName, const unsigned char* data, unsigned long size)
      : CPOSBinData(KAPTerminatedText(typeName).Text(), data, size) {}

  // The name and the bytes are borrowed: they live as long as the object. The bytes are null when
  // there are none.
  const char* GetTypeName() const { return Call<"GetTypeName">(Handle()); }
  const unsigned char* GetBinData() const { return Call<"GetBinData">(Handle()); }
  unsigned long GetSize() const { return Call<"GetSize">(Handle()); }
};

}  // namespace KAP_T_MT
