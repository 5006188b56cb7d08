// SPDX-License-Identifier: MIT

// Random sequences of registered procedures on a few live handles. A simple model says what each
// call must do.

#include <iterator>

#include "sequence/Steps.h"

namespace {

constexpr int kMaxSteps = 300;

// A choice of the input is a number in this table, which gives its weight to a step, too. The seeds
// depend on the order.
constexpr void (*kSteps[])(Driver&) = {&Make,  &Make,    &Append,    &SetAt,      &RemoveAt,
                                       &Put,   &Put,     &RemoveKey, &GetAt,      &DeepGet,
                                       &Clone, &Compare, &AsText,    &AsDocument, &ValidateOrMisuse,
                                       &Drop};

}  // namespace

KAP_FUZZ_TARGET(input, harness) {
  Driver driver(input, harness);
  for (int i = 0; i < kMaxSteps && !driver.fChoices.IsEmpty(); ++i) {
    kSteps[driver.fChoices.Below(std::size(kSteps))](driver);
  }
  for (const Live& live : driver.fLives) live.ExpectSame();
}
