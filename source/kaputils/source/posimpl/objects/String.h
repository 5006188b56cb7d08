// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPStringAtom.h"
#include "kapimpl/base/Required.h"
#include "posimpl/base/ObjectKind.h"

namespace NPOSObjectImpl {

// An 8-bit string. Its text is an atom, so equal strings share one text.
class String final : public TScalar<String> {
 public:
  static constexpr POSType kType = KAP_T_MT::kPOSString;
  static constexpr const char* kNotInstance = "instance was not an POSString";

  explicit String(const char* text) : fText(Required(text)) {}

  const char* Get() const noexcept { return fText.Text(); }
  bool EqualsSame(const String& other) const noexcept { return Get() == other.Get(); }

 private:
  const KAP_T_MT::CKAPStringAtom fText;
};

}  // namespace NPOSObjectImpl
