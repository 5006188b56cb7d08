// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/base/ObjectKind.h"

namespace NPOSObjectImpl {

class Number final : public TScalar<Number> {
 public:
  static constexpr POSType kType = KAP_T_MT::kPOSNumber;
  static constexpr const char* kNotInstance = "instance was not an POSNumber";

  explicit Number(double value) noexcept : fValue(value) {}

  double Get() const noexcept { return fValue; }
  bool EqualsSame(const Number& other) const noexcept { return fValue == other.fValue; }

 private:
  const double fValue;
};

}  // namespace NPOSObjectImpl
