// SPDX-License-Identifier: MIT
// Characters at the limits of their encodings, and the places of values that follow them.

#include "Posutil.h"

namespace {

Outcome Print(const std::string& from, const std::string& to, const std::string& document) {
  return RunPosutil({"print", "--from", from, "--to", to, "-"}, document);
}

// The first and the last of each range of UTF-8, what is just outside, and what a terminal would
// not show as it is.
TEST(EncodingTest, TheOutlineShowsWhatIsInvisible) {
  const struct {
    const char* why;
    std::vector<std::string> shown;
    std::vector<std::pair<std::string, std::string>> escaped;
  } rows[] = {
      {"control characters",
       {"~", "\u00A0"},
       {{"\x7F", "\\x7f"}, {"\xC2\x80", "\\xc2\\x80"}, {"\xC2\x9F", "\\xc2\\x9f"}}},
      {"directions and marks",
       {"\u200D", "\u2027", "\u202F", "\u2065", "\u206A"},
       {{"\u061C", "\\u061c"},
        {"\u200E", "\\u200e"},
        {"\u200F", "\\u200f"},
        {"\u2028", "\\u2028"},
        {"\u202E", "\\u202e"},
        {"\u2066", "\\u2066"},
        {"\u2069", "\\u2069"},
        {"\uFEFF", "\\ufeff"}}},
      {"two bytes",
       {"\u0401", "\u07FF"},
       {{"\xC0\x80", "\\xc0\\x80"}, {"\xC1\xBF", "\\xc1\\xbf"}, {"\xC3(", "\\xc3("}}},
      {"three bytes",
       {"\u0800", "\uD7FF", "\uE000", "\uFFFF"},
       {{"\xE0\x9F\xBF", "\\xe0\\x9f\\xbf"},
        {"\xED\xA0\x80", "\\xed\\xa0\\x80"},
        {"\xE2\x82", "\\xe2\\x82"}}},
      {"four bytes",
       {"\U00010000", "\U0010FFFF"},
       {{"\xF0\x8F\xBF\xBF", "\\xf0\\x8f\\xbf\\xbf"},
        {"\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
        {"\xF5\x80\x80\x80", "\\xf5\\x80\\x80\\x80"},
        {"\xF0\x9F\x98x", "\\xf0\\x9f\\x98x"}}},
      {"a byte in the middle alone", {"a"}, {{"\x80", "\\x80"}}},
  };
  for (auto row : rows) {
    SCOPED_TRACE(row.why);
    for (const std::string& text : row.shown) row.escaped.emplace_back(text, text);
    for (const auto& [text, shown] : row.escaped) {
      EXPECT_EQ(Print("text", "tree", "(" + text + ")"), (Outcome{0, "\"" + shown + "\"\n", ""}));
    }
  }
}

TEST(EncodingTest, SurrogatesInJson) {
  const std::string half = "2: half of a surrogate pair in a string";
  const std::string hex = "2: expected four hexadecimal digits after \\u";
  const struct {
    std::string in;
    std::string err;
  } rows[] = {
      {R"("\ud83d")", half},
      {R"("\ud83dx12345678")", half},
      {R"("\ud83d\n1234567")", half},
      {R"("\ud83d\u0041")", half},
      {R"("\ud83d\udbff")", half},
      {R"("\ud83d\ue000")", half},
      {R"("\udc00")", half},
      {R"("\u12")", hex},
      {R"("\u12G4")", hex},
      {R"("a\u)", "5: unexpected end of input in a string"},
      {R"("\)", "3: unexpected end of input in a string"},
  };
  for (const auto& [in, err] : rows) {
    EXPECT_EQ(FirstMessage(Print("json", "json", in)), "<stdin>:1:" + err) << in;
  }
  EXPECT_EQ(Print("json", "json", R"("\udbff\udfff\ue000")").fOut, "\"\U0010FFFF\uE000\"\n");
}

// A value that the other format cannot hold is found in the text again.
TEST(EncodingTest, PlacesAfterEveryKindOfToken) {
  const struct {
    const char* from;
    const char* to;
    std::string in;
    std::string err;
  } rows[] = {
      {"text", "json", "< a1 +1 b -1 C_2 .5 _d 1.5 (e\\)f) [x1 `0041`(\\\\\xFF)] >",
       "45: e)f[2]: invalid UTF-8"},
      {"json", "text", R"({"x":"\"","\u0061\"\\\/\b\f\n\r\t\ud83d\ude00\u20ac\ue000":[1,null]})",
       "63: a\"\\/\\x08\\x0c\\x0a\\x0d\\x09\U0001F600\u20AC\uE000[1]: text notation cannot hold an "
       "empty slot"},
      {"json", "text", R"({"$object":{"$unicode":")" + std::string(101, 'x') + "\"}}",
       "24: $unicode: text notation limits strings to 100 characters"},
      {"typea", "json",
       R"(POSStreamerTypeA_Version1.0 <"\n" #1 "a\tb\r\"\\\001 c" <"b" {"t" #1 0A} )"
       R"("u" `0041` "v" "\377" > >)",
       "89: a\\x09b\\x0d\"\\\\x01 c.v: invalid UTF-8"},
  };
  for (const auto& [from, to, in, err] : rows) {
    const Outcome outcome = Print(from, to, in);
    EXPECT_EQ(outcome.fStatus, 3);
    EXPECT_EQ(FirstMessage(outcome), "<stdin>:1:" + err) << in;
  }
}

}  // namespace
