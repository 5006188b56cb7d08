// SPDX-License-Identifier: MIT
#include "base/DecimalText.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace PosUtil {

namespace {

// Whole numbers below this limit look as users write them: 100000, not 1e+05.
constexpr double kWholeLimit = 9007199254740992.0;

bool IsWhole(double number) {
  return std::fabs(number) < kWholeLimit &&
         static_cast<double>(static_cast<long long>(number)) == number &&
         !(number == 0 && std::signbit(number));
}

// Most numbers fit in 32 bits, whose division is faster.
char* WriteWhole(char* place, char* end, long long number) {
  if (number >= 0 && number <= UINT32_MAX) {
    return std::to_chars(place, end, static_cast<std::uint32_t>(number)).ptr;
  }
  return std::to_chars(place, end, number).ptr;
}

}  // namespace

char* WriteDecimal(char* place, double number) {
  char* const end = place + kLongestDecimal;
  return IsWhole(number) ? WriteWhole(place, end, static_cast<long long>(number))
                         : std::to_chars(place, end, number).ptr;
}

DecimalText::DecimalText(double number, Form form) {
  const bool isPlain = form == kAny || IsWhole(number);
  char* const end =
      isPlain ? WriteDecimal(fText, number)
              : std::to_chars(fText, fText + sizeof fText, number, std::chars_format::fixed).ptr;
  fLength = static_cast<std::size_t>(end - fText);
}

}  // namespace PosUtil
