// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPMemory.h"
#include "posimpl/base/ObjectKind.h"

namespace NPOSObjectImpl {

// A string of 16-bit units: a copy in host memory that ends in a zero unit.
class UnicodeString final : public TScalar<UnicodeString> {
 public:
  static constexpr POSType kType = KAP_T_MT::kPOSUnicodeString;
  static constexpr const char* kNotInstance = "instance was not an POSUnicodeString";

  explicit UnicodeString(const unsigned short* text);

  const unsigned short* Get() const noexcept { return fText.get(); }
  std::size_t Length() const noexcept { return fLength; }  // in units, without the zero unit
  bool EqualsSame(const UnicodeString& other) const noexcept;

 private:
  const KAP_T_MT::TKAPBlock<unsigned short> fText;
  const std::size_t fLength;  // without the zero unit

  UnicodeString(const unsigned short* text, std::size_t length);
};

}  // namespace NPOSObjectImpl
