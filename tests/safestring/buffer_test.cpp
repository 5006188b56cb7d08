// SPDX-License-Identifier: MIT

// Functions that change a buffer. Each row has the whole buffer before and after the call, with '.'
// for a zero byte: a byte too many overwrites the '#' after the size that the call is given.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "SafeStringAPIs.h"

namespace KAP_T_MT {
namespace {

constexpr std::size_t kMost = SIZE_MAX;
const char gOpen[] = {'x', 'y'};                            // no terminator
const wchar_t gWide[] = {static_cast<wchar_t>(0xD800), 0};  // no locale can write it

struct Row {
  const char* why;
  const char* before;
  int (*call)(char* buffer);  // the result of a call without one is 0
  int result;
  const char* after;
};

void Check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    std::string before = row.before;
    std::replace(before.begin(), before.end(), '.', '\0');
    std::vector<char> buffer(before.begin(), before.end());
    EXPECT_EQ(row.call(buffer.data()), row.result);
    std::string after(buffer.begin(), buffer.end());
    std::replace(after.begin(), after.end(), '\0', '.');
    EXPECT_EQ(after, row.after);
  }
}

TEST(SafeBuffer, Copy) {
  Check({
      {"cut", "######", [](char* b) { return strcpy_safe(b, 4, "abcdef"), 0; }, 0, "abc.##"},
      {"fits exactly", "######", [](char* b) { return strcpy_safe(b, 4, "abc"), 0; }, 0, "abc.##"},
      {"no padding", "######", [](char* b) { return strcpy_safe(b, 6, "abcd"), 0; }, 0, "abcd.#"},
      {"size 0", "##", [](char* b) { return strcpy_safe(b, 0, "abc"), 0; }, 0, ".#"},
      {"null source", "##", [](char* b) { return strcpy_safe(b, 2, nullptr), 0; }, 0, ".#"},
      {"null", "#", [](char*) { return strcpy_safe(nullptr, 2, "a"), 0; }, 0, "#"},
      {"count first", "####", [](char* b) { return strncpy_safe(b, 4, "abcd", 2), 0; }, 0, "ab.#"},
      {"size first", "####", [](char* b) { return strncpy_safe(b, 3, "abcd", 3), 0; }, 0, "ab.#"},
      {"count 0", "##", [](char* b) { return strncpy_safe(b, 2, "ab", 0), 0; }, 0, ".#"},
      {"null, null", "#", [](char*) { return strncpy_safe(nullptr, 0, nullptr, 0), 0; }, 0, "#"},
      {"open source", "###", [](char* b) { return strncpy_safe(b, 3, gOpen, 2), 0; }, 0, "xy."},
  });
}

TEST(SafeBuffer, Append) {
  Check({
      {"fits exactly", "a.####", [](char* b) { return strcat_safe(b, 4, "bc"); }, 0, "abc.##"},
      {"one too long", "a.####", [](char* b) { return strcat_safe(b, 3, "bc"); }, -2, "ab.###"},
      {"full, nothing to add", "ab.#", [](char* b) { return strcat_safe(b, 3, ""); }, 0, "ab.#"},
      {"no terminator", "abc.", [](char* b) { return strcat_safe(b, 3, ""); }, -1, ".bc."},
      {"size 0", "ab.", [](char* b) { return strcat_safe(b, 0, "c"); }, -1, ".b."},
      {"null source", "ab.", [](char* b) { return strcat_safe(b, 3, nullptr); }, -1, ".b."},
      {"null", "#", [](char*) { return strcat_safe(nullptr, 1, "a"); }, -1, "#"},
      {"null of size 0", "#", [](char*) { return strcat_safe(nullptr, 0, "a"); }, 0, "#"},
      {"count", "a.####", [](char* b) { return strncat_safe(b, 6, "bcd", 2); }, 0, "abc.##"},
      {"count fills", "a.###", [](char* b) { return strncat_safe(b, 4, "bcd", 2); }, 0, "abc.#"},
      {"count too big", "a.##", [](char* b) { return strncat_safe(b, 3, "bcd", 2); }, -2, "ab.#"},
      {"source fills", "a.##", [](char* b) { return strncat_safe(b, 3, "b", kMost); }, 0, "ab.#"},
      {"count 0, full", "a.#", [](char* b) { return strncat_safe(b, 2, "b", 0); }, 0, "a.#"},
      {"arguments first", "a.#", [](char* b) { return strncat_safe(b, 2, nullptr, 0); }, -1, "..#"},
      {"size first", "a.#", [](char* b) { return strncat_safe(b, 0, "b", 0); }, -1, "..#"},
      {"text first", "ab.", [](char* b) { return strncat_safe(b, 2, "c", 0); }, -1, ".b."},
      {"null, 0, 0", "#", [](char*) { return strncat_safe(nullptr, 0, "b", 0); }, 0, "#"},
      {"null, 0, 1", "#", [](char*) { return strncat_safe(nullptr, 0, "b", 1); }, -1, "#"},
      {"null, 1, 0", "#", [](char*) { return strncat_safe(nullptr, 1, "b", 0); }, -1, "#"},
  });
}

TEST(SafeBuffer, Format) {
  Check({
      {"fits", "######", [](char* b) { return sprintf_safe(b, 4, "%d%s", 1, "ab"); }, 3, "1ab.##"},
      {"exactly size", "######", [](char* b) { return sprintf_safe(b, 4, "abcd"); }, -2, "abc.##"},
      {"cut", "######", [](char* b) { return sprintf_safe(b, 4, "%s", "abcde"); }, -2, "abc.##"},
      {"largest size", "####", [](char* b) { return sprintf_safe(b, kMost, "ab"); }, 2, "ab.#"},
      {"size 0", "##", [](char* b) { return sprintf_safe(b, 0, "ab"); }, -1, ".#"},
      {"no format", "##", [](char* b) { return sprintf_safe(b, 2, nullptr); }, -1, ".#"},
      {"null", "#", [](char*) { return sprintf_safe(nullptr, 2, "a"); }, -1, "#"},
      {"encoding", "###", [](char* b) { return sprintf_safe(b, 3, "%ls", gWide); }, -1, ".##"},
  });
}

TEST(SafeBuffer, FormatCounted) {
  Check({
      {"count cuts", "######", [](char* b) { return snprintf_safe(b, 5, 2, "abcd"); }, 4, "ab.###"},
      {"last byte 0", "######", [](char* b) { return snprintf_safe(b, 6, 4, "a"); }, 1, "a.##.#"},
      {"count size-1", "####", [](char* b) { return snprintf_safe(b, 3, 2, "abcd"); }, 4, "ab.#"},
      {"count is size", "####", [](char* b) { return snprintf_safe(b, 3, 3, "abc"); }, -2, "ab.#"},
      {"count over", "####", [](char* b) { return snprintf_safe(b, 3, 4, "ab"); }, 2, "ab.#"},
      {"no wrap", "####", [](char* b) { return snprintf_safe(b, 3, kMost, "abc"); }, -2, "ab.#"},
      {"count 0", "##", [](char* b) { return snprintf_safe(b, 2, 0, "a"); }, 0, ".#"},
      {"count 0, size 0", "##", [](char* b) { return snprintf_safe(b, 0, 0, "a"); }, -1, ".#"},
      {"format first", "##", [](char* b) { return snprintf_safe(b, 2, 0, nullptr); }, -1, ".#"},
      {"null, 0, 0", "#", [](char*) { return snprintf_safe(nullptr, 0, 0, nullptr); }, 0, "#"},
      {"null, 1, 0", "#", [](char*) { return snprintf_safe(nullptr, 1, 0, "a"); }, -1, "#"},
      {"null", "#", [](char*) { return snprintf_safe(nullptr, 0, 1, "a"); }, -1, "#"},
      {"encoding", "###", [](char* b) { return snprintf_safe(b, 2, 2, "%ls", gWide); }, -1, "..#"},
  });
}

TEST(SafeBuffer, NumberSizes) {
  Check({
      {"spare byte", "####", [](char* b) { return _itoa_safe(5, b, 3, 10); }, 0, "5.##"},
      {"spare byte missing", "####", [](char* b) { return _itoa_safe(5, b, 2, 10); }, -2, ".###"},
      {"negative", "####", [](char* b) { return _itoa_safe(-5, b, 3, 10); }, 0, "-5.#"},
      {"negative, short", "####", [](char* b) { return _itoa_safe(-5, b, 2, 10); }, -2, ".###"},
      {"zero", "####", [](char* b) { return _itoa_safe(0, b, 2, 10); }, 0, "0.##"},
      {"zero, short", "####", [](char* b) { return _itoa_safe(0, b, 1, 10); }, -2, ".###"},
      {"two, short", "#####", [](char* b) { return _ui64toa_safe(10, b, 3, 10); }, -2, ".####"},
      {"size 0", "##", [](char* b) { return _itoa_safe(5, b, 0, 10); }, -2, ".#"},
      {"radix 1", "##", [](char* b) { return _itoa_safe(5, b, 2, 1); }, -1, "##"},
      {"radix 37", "##", [](char* b) { return _ultoa_safe(5, b, 0, 37); }, -1, "##"},
      {"null", "#", [](char*) { return _itoa_safe(-5, nullptr, 0, 10); }, -1, "#"},
  });
}

TEST(SafeBuffer, NumberTexts) {
  const auto text = [](auto convert, auto value, int radix) {
    char buffer[66];
    return convert(value, buffer, sizeof buffer, radix) == 0 ? std::string(buffer) : "failed";
  };
  EXPECT_EQ(text(_itoa_safe, 255, 16), "ff");
  EXPECT_EQ(text(_itoa_safe, 35 * 36, 36), "z0");
  EXPECT_EQ(text(_itoa_safe, INT_MIN, 10), "-2147483648");
  EXPECT_EQ(text(_itoa_safe, -1, 16), "ffffffff") << "32 bits, not 64";
  EXPECT_EQ(text(_itoa_safe, INT_MIN, 2), "1" + std::string(31, '0'));
  EXPECT_EQ(text(_ltoa_safe, LONG_MIN, 10), "-9223372036854775808");
  EXPECT_EQ(text(_i64toa_safe, INT64_MAX, 10), "9223372036854775807");
  EXPECT_EQ(text(_i64toa_safe, -1, 36), "3w5e11264sgsf");
  EXPECT_EQ(text(_ultoa_safe, ULONG_MAX, 10), "18446744073709551615") << "never a sign";
  EXPECT_EQ(text(_ui64toa_safe, UINT64_MAX, 2), std::string(64, '1')) << "fills 66 bytes exactly";
}

}  // namespace
}  // namespace KAP_T_MT
