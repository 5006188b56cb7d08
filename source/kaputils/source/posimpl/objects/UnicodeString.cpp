// SPDX-License-Identifier: MIT
#include "posimpl/objects/UnicodeString.h"

#include <algorithm>

#include "kapimpl/base/Required.h"

namespace NPOSObjectImpl {

namespace {

std::size_t LengthOf(const unsigned short* text) noexcept {
  std::size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

KAP_T_MT::TKAPBlock<unsigned short> CopyOf(const unsigned short* text, std::size_t units) {
  auto copy = KAP_T_MT::KAPNewBlock<unsigned short>(units);
  std::copy_n(text, units, copy.get());
  return copy;
}

}  // namespace

UnicodeString::UnicodeString(const unsigned short* text)
    : UnicodeString(text, LengthOf(Required(text))) {}

UnicodeString::UnicodeString(const unsigned short* text, std::size_t length)
    : fText(CopyOf(text, length + 1)), fLength(length) {}

bool UnicodeString::EqualsSame(const UnicodeString& other) const noexcept {
  return fLength == other.fLength && std::equal(Get(), Get() + fLength, other.Get());
}

}  // namespace NPOSObjectImpl
