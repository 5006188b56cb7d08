// SPDX-License-Identifier: MIT
#include "base/DecimalText.h"

#include <charconv>
#include <cmath>

namespace PosUtil {

namespace {

// Whole numbers below this limit look as users write them: 100000, not 1e+05.
constexpr double kWholeLimit = 9007199254740992.0;

bool IsWhole(double number) {
  return std::fabs(number) < kWholeLimit &&
         static_cast<double>(static_cast<long long>(number)) == number &&
         !(number == 0 && std::signbit(number));
}

}  // namespace

DecimalText::DecimalText(double number, Form form) {
  char* const end = fText + sizeof fText;
  const auto result = IsWhole(number) ? std::to_chars(fText, end, static_cast<long long>(number))
                      : form == kAny  ? std::to_chars(fText, end, number)
                                      : std::to_chars(fText, end, number, std::chars_format::fixed);
  fLength = static_cast<std::size_t>(result.ptr - fText);
}

}  // namespace PosUtil
