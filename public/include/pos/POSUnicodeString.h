// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to a string of 16-bit units, meant for UTF-16; the units are not checked. It never
// changes. See CPOSObject for ownership, errors and threads.
class CPOSUnicodeString : public TPOSKind<POSUnicodeStringInterface, "IsPOSUnicodeString",
                                          "downcast from CPOSObject to CPOSUnicodeString failed"> {
 public:
  using TPOSKind::TPOSKind;
  // Copies the units up to the zero unit. CKAPError "invalid container", with a report, when the
  // object cannot be made.
  explicit CPOSUnicodeString(const unsigned short* text)
      : TPOSKind(Call<"NewPOSUnicodeString">(text), KAPAdopt()) {}

  // The units and a zero unit, borrowed: they live as long as the object.
  const unsigned short* Get() const { return Call<"Get">(Handle()); }

  // Counts the units up to the first zero unit, modulo 2^32. `text` must not be null.
  static unsigned int GetLength(const unsigned short* text) noexcept {
    std::size_t length = 0;
    while (text[length] != 0) ++length;
    return static_cast<unsigned int>(length);
  }
};

}  // namespace KAP_T_MT
