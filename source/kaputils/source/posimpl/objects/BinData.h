// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPMemory.h"
#include "kap/KAPStringAtom.h"
#include "posimpl/base/ObjectKind.h"

namespace NPOSObjectImpl {

// Bytes with a type name: a copy in host memory, and no block when there are no bytes.
class BinData final : public TScalar<BinData> {
 public:
  static constexpr POSType kType = KAP_T_MT::kPOSBinData;
  static constexpr const char* kNotInstance = "instance was not an POSBinData";

  BinData(const char* typeName, const unsigned char* data, unsigned long size);

  const char* GetTypeName() const noexcept { return fTypeName.Text(); }
  const unsigned char* GetBinData() const noexcept { return fData.get(); }
  unsigned long GetSize() const noexcept { return fSize; }
  bool EqualsSame(const BinData& other) const noexcept;

 private:
  const KAP_T_MT::CKAPStringAtom fTypeName;
  const KAP_T_MT::TKAPBlock<unsigned char> fData;
  const unsigned long fSize;
};

}  // namespace NPOSObjectImpl
