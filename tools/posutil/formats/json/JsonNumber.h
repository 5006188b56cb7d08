// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace PosUtil {

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// A JSON number, from its first byte to the first one that is not a part of it. The text ends with
// a zero byte.
struct JsonNumber {
  explicit JsonNumber(const char* begin) : fEnd(begin) {
    if (*fEnd == '-') ++fEnd;
    if (*fEnd == '0') {
      ++fEnd;
    } else {
      const char* const first = fEnd;
      for (; IsDigit(*fEnd); ++fEnd) fWhole = fWhole * 10 + static_cast<unsigned>(*fEnd - '0');
      if (fEnd == first) return;
    }
    fIsWhole = *fEnd != '.' && (*fEnd | 32) != 'e';
    if (*fEnd == '.' && !SkipDigits()) return;
    if ((*fEnd | 32) == 'e') {
      if (fEnd[1] == '+' || fEnd[1] == '-') ++fEnd;
      if (!SkipDigits()) return;
    }
    fIsValid = true;
  }

  const char* fEnd;
  std::uint64_t fWhole = 0;  // the digits of a whole number, if they are at most 19
  bool fIsWhole = false;
  bool fIsValid = false;

 private:
  bool SkipDigits() {
    const char* const first = ++fEnd;
    while (IsDigit(*fEnd)) ++fEnd;
    return fEnd > first;
  }
};

}  // namespace PosUtil
