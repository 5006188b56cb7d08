// SPDX-License-Identifier: MIT
#include "posimpl/objects/BinData.h"

#include <algorithm>

#include "kapimpl/base/Required.h"

namespace NPOSObjectImpl {

namespace {

KAP_T_MT::TKAPBlock<unsigned char> CopyOf(const unsigned char* data, unsigned long size) {
  auto copy = KAP_T_MT::KAPNewBlock<unsigned char>(size);
  if (size != 0) std::copy_n(Required(data), size, copy.get());
  return copy;
}

}  // namespace

BinData::BinData(const char* typeName, const unsigned char* data, unsigned long size)
    : fTypeName(Required(typeName)), fData(CopyOf(data, size)), fSize(size) {}

bool BinData::EqualsSame(const BinData& other) const noexcept {
  return GetTypeName() == other.GetTypeName() && fSize == other.fSize &&
         std::equal(fData.get(), fData.get() + fSize, other.fData.get());
}

}  // namespace NPOSObjectImpl
