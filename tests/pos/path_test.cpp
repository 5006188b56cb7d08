// SPDX-License-Identifier: MIT
#include "World.h"

namespace {

using namespace KAP_T_MT;

TEST_F(PosTest, DeepPaths) {
  const Object dict =
      Read("< a < b [10 20 [30 < c 40 >]] () 5 > (x]) 1 (a b) 2 () < b 3 () 4 > n 6 (]) [7] >");
  const Object slots = Own(Call<POSArrayInterface, "NewPOSArray">());
  Call<POSArrayInterface, "SetAt">(slots.get(), 1ul, Number(8).get());
  Put(dict, "s", slots);
  const struct {
    const char* why;
    const char* path;
    const char* value;  // "~": leads nowhere
  } rows[] = {
      {"a key", "n", "6"},
      {"a leading point", ".n", "6"},
      {"an element", "a.b[1]", "20"},
      {"on and on", "a.b[2][1].c", "40"},
      {"an array", "a.b[2]", "[30 <c 40>]"},
      {"leading zeros", "a.b[000000000000000000000000000000000000000001]", "20"},
      {"2^32 is 0, deliberately", "a.b[4294967296]", "10"},
      {"2^64 + 1", "a.b[18446744073709551617]", "20"},
      {"2^31 is negative, deliberately", "a.b[2147483648]", "~"},
      {"past the end", "a.b[3]", "~"},
      {"an empty slot", "s[0]", "~"},
      {"after an empty slot", "s[1]", "8"},
      {"no digits", "a.b[]", "~"},
      {"no number", "a.b[x]", "~"},
      {"a sign", "a.b[+1]", "~"},
      {"digits, then something else", "a.b[1x]", "~"},
      {"not closed", "a.b[1", "~"},
      {"neither . nor [ after ]", "a.b[2]x", "~"},
      {"an index on a dictionary", "a[0]", "~"},
      {"a key on an array", "a.b.c", "~"},
      {"a key on a number", "n.x", "~"},
      {"absent", "a.x", "~"},
      {"] in a key", "x]", "1"},
      {"a key that is ]", "][0]", "7"},
      {"a space in a key", "a b", "2"},
      {"the empty key", "", "<() 4 b 3>"},
      {"the empty key with its point", ".", "<() 4 b 3>"},
      {"the empty key, then b", "..b", "3"},
      {"the empty key at the end", "a.", "5"},
      {"an index at the beginning is one on the empty key", "[0]", "~"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Show(DeepGet(dict, row.path)), row.value);
  }
}

}  // namespace
