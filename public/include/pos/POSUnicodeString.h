// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "kap/KAPMemory.h"
#include "kap/TOQException.h"
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

  // The same for a literal, u"text", and for a text without a zero unit at its end. TOQException "a
  // text cannot hold a zero unit" for one that has a zero unit elsewhere.
  explicit CPOSUnicodeString(std::u16string_view text)
      : CPOSUnicodeString(Terminated(text).get()) {}

  // A copy of the units; empty for an empty reference, with a report.
  [[nodiscard]] std::u16string Text() const {
    const unsigned short* text = Get();
    return text ? std::u16string(text, text + GetLength(text)) : std::u16string();
  }
  // The units and a zero unit, borrowed: they live as long as the object.
  const unsigned short* Get() const { return Call<"Get">(Handle()); }

  // Counts the units up to the first zero unit, modulo 2^32. `text` must not be null.
  static unsigned int GetLength(const unsigned short* text) noexcept {
    std::size_t length = 0;
    while (text[length] != 0) ++length;
    return static_cast<unsigned int>(length);
  }

 private:
  // The interface's units are another type than char16_t, hence a copy.
  static TKAPBlock<unsigned short> Terminated(std::u16string_view text) {
    if (text.find(u'\0') != std::u16string_view::npos)
      throw TOQException("a text cannot hold a zero unit");
    auto units = KAPNewBlock<unsigned short>(text.size() + 1);
    *std::copy(text.begin(), text.end(), units.get()) = 0;
    return units;
  }
};

}  // namespace KAP_T_MT
