// SPDX-License-Identifier: MIT
// Text notation to property objects and back, and the outline.

#include "Posutil.h"

namespace {

Outcome Print(const std::string& from, const std::string& to, const std::string& document) {
  return RunPosutil({"print", "--from", from, "--to", to, "-"}, document);
}

TEST(TextTest, RoundTrips) {
  const std::string hundred(100, 'a');
  const struct {
    const char* why;
    std::string in;
    std::string out;
  } rows[] = {
      {"containers", "<b[1 2]a<>c[]>", "<\n  a < >\n  b [\n    1\n    2\n  ]\n  c []\n>"},
      {"strings: bare where they can be", "[_a1 (a b) (1a) () (a\\)b\\\\) (a(b)]",
       "[\n  _a1\n  (a b)\n  (1a)\n  ()\n  (a\\)b\\\\)\n  (a(b)\n]"},
      {"any bytes", "(\xFF\n\t)", "(\xFF\n\t)"},
      {"a character after the letters", "({)", "({)"},
      {"numbers", "[+5 007 -.5 - 1.2.3 1e5]", "[\n  5\n  7\n  -0.5\n  0\n  1.2\n  1\n  e5\n]"},
      {"Unicode strings", "[`0041d83DDE00` ``]", "[\n  `0041D83DDE00`\n  ``\n]"},
      {"the longest bare word", hundred, hundred},
      {"the longest string", "(" + std::string(99, ' ') + "x)", "(" + std::string(99, ' ') + "x)"},
      {"odd keys", "< (a b) 1 () 2 >", "<\n  () 2\n  (a b) 1\n>"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const Outcome once = Print("text", "text", row.in);
    EXPECT_EQ(once, (Outcome{0, row.out + "\n", ""}));
    EXPECT_EQ(Print("text", "text", once.fOut), once);
  }
}

TEST(TextTest, RejectsWhatTextCannotHold) {
  const std::string limit = "text notation limits strings to 100 characters";
  const struct {
    std::string in;
    std::string message;
  } rows[] = {
      {R"({"a":[1,null]})", "9: a[1]: text notation cannot hold an empty slot"},
      {R"({"a":{"$binary":"t","base64":""}})", "6: a: text notation cannot hold binary data"},
      {"[1e99,1e100]", "7: [1]: the number needs an exponent, which text notation does not have"},
      {"[1e-98,1e-99]", "8: [1]: the number needs an exponent, which text notation does not have"},
      {"[\"" + std::string(100, 'a') + "\",\"" + std::string(101, 'a') + "\"]",
       "105: [1]: " + limit},
      {"[\"" + std::string(50, ')') + "\",\"" + std::string(51, ')') + "\"]",
       "55: [1]: " + limit + ", including backslashes"},
      {"{\"" + std::string(101, 'k') + "\":1}", "106: " + std::string(101, 'k') + ": " + limit},
      {R"([{"$unicode":")" + std::string(100, 'a') + R"("},{"$unicode":")" + std::string(101, 'a') +
           "\"}]",
       "118: [1]: text notation limits Unicode strings to 100 units"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    const Outcome outcome = Print("json", "text", row.in);
    EXPECT_EQ(outcome.fStatus, 3);
    EXPECT_EQ(FirstMessage(outcome), "<stdin>:1:" + row.message);
  }
}

TEST(TextTest, JsonThereAndBack) {
  const std::string json =
      Print("json", "json", R"({"a b":[1e20,-0.0,1e-7,"x)\\","é"],"$":{"$unicode":"é"},"":{}})")
          .fOut;
  const Outcome text = Print("json", "text", json);
  ASSERT_EQ(text.fStatus, 0);
  EXPECT_EQ(Print("text", "json", text.fOut), (Outcome{0, json, ""}));
}

TEST(TextTest, SyntaxErrorsNameTheTokenAtFault) {
  const std::string ends = "unexpected end of the text; expected ";
  const std::string digits(402, '0');
  const struct {
    const char* why;
    std::string in;
    std::string err;
  } rows[] = {
      {"empty", "", "1:1: no object in the text"},
      {"blank", " \n ", "1:1: no object in the text"},
      {"unclosed", "< a\n  [1 \n", "2:5: " + ends + "a value or ']'"},
      {"unclosed after a key", "< (a b", "1:7: unexpected end of the text in a string"},
      {"without a value", "< (a b) ", "1:8: " + ends + "a value for \"a b\""},
      {"an unclosed Unicode string", "`0041", "1:6: unexpected end of the text in a string"},
      {"no value for a key", "< a 1 b >", "1:9: unexpected '>'; expected a value for \"b\""},
      {"another bracket", "[1 >", "1:4: unexpected '>'; expected a value or ']'"},
      {"another bracket after a sign", "[-1 >", "1:5: unexpected '>'; expected a value or ']'"},
      {"another bracket", "< a 1 ]", "1:7: unexpected ']'; expected a key or '>'"},
      {"a bracket alone", "]", "1:1: unexpected ']'; expected a value"},
      {"a number as a key", "< 1 a >", "1:3: a number cannot be a key; expected a key or '>'"},
      {"a Unicode string as a key", "< `0041` a >",
       "1:3: a Unicode string cannot be a key; expected a key or '>'"},
      {"an array as a key", "< [] a >", "1:3: unexpected '['; expected a key or '>'"},
      {"no token", "< a\n\t\"x\" >",
       "2:2: no value starts with this character; expected a value for \"a\""},
      {"a long string", "[ (" + std::string(101, ' ') + ")]",
       "1:3: string longer than 100 characters"},
      {"a long word", "[ a" + std::string(100, 'b') + "]",
       "1:3: string longer than 100 characters"},
      {"a long number", "[ " + std::string(101, '1') + "]",
       "1:3: number longer than 100 characters"},
      {"a long Unicode string", "[`" + digits + "00`]",
       "1:2: Unicode string longer than 100 units"},
      {"no digits", "`00zz`",
       "1:1: malformed Unicode string; expected four hexadecimal digits for each unit"},
      {"half a unit", "[`00410`]",
       "1:2: malformed Unicode string; expected four hexadecimal digits for each unit"},
      {"after the object", "[1] x",
       "1:5: unexpected text after the object; text notation holds one"},
      {"a zero character after the object", std::string("[1]\0x", 5),
       "1:4: a zero character in the text"},
      {"a zero character inside", std::string("[1\0]", 4), "1:3: a zero character in the text"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const Outcome outcome = Print("text", "tree", row.in);
    EXPECT_EQ(outcome.fStatus, 3);
    EXPECT_EQ(FirstMessage(outcome), "<stdin>:" + row.err);
  }
  // A wide character, one that the C library does not know, and a wide one that it does not know.
  const std::pair<std::string, int> widths[] = {{"\u65E5", 2}, {"\u0378", 1}, {"\U0001FAFF", 2}};
  for (const auto& [character, width] : widths) {
    const std::string line = " (" + character + ") >\n";
    EXPECT_EQ(Print("text", "tree", "[1\n\t" + line.substr(1)).fErr,
              "<stdin>:2:6: unexpected '>'; expected a value or ']'\n  " + line + "  " +
                  std::string(static_cast<std::size_t>(4 + width), ' ') + "^\n");
  }
}

TEST(TreeTest, ShowsEveryKindUnambiguously) {
  const std::string json =
      R"({"n":-1.5,"s":"a\"\\\n\u0085é","u":{"$unicode":"é"},"a":[1,null,[]],"d":{"x":1},"":1,)"
      R"("b":[{"$binary":"t","base64":""},{"$binary":"t","base64":"AA=="},)"
      R"({"$binary":"t","base64":"AAECAwQFBgcICQoLDA0OD/8="}],"c: d":2,"[0]":3,"\"q":4," s":5,)"
      R"("s ":6})";
  const std::string tree =
      "dictionary\n"
      "\"\": 1\n"
      "\" s\": 5\n"
      "\"\\\"q\": 4\n"
      "\"[0]\": 3\n"
      "a: array of 3\n"
      "  [0]: 1\n"
      "  [1]: (empty)\n"
      "  [2]: empty array\n"
      "b: array of 3\n"
      "  [0]: binary data \"t\", 0 bytes\n"
      "  [1]: binary data \"t\", 1 byte: 00\n"
      "  [2]: binary data \"t\", 17 bytes: 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f ...\n"
      "\"c: d\": 2\n"
      "d: dictionary\n"
      "  x: 1\n"
      "n: -1.5\n"
      "s: \"a\\\"\\\\\\x0a\\xc2\\x85\u00E9\"\n"
      "\"s \": 6\n"
      "u: u\"\u00E9\"\n";
  EXPECT_EQ(Print("json", "tree", json), (Outcome{0, tree, ""}));
  EXPECT_EQ(Print("text", "tree", "[`D800` (\xFF)]"),
            (Outcome{0, "array of 2\n[0]: units d800\n[1]: \"\\xff\"\n", ""}));
}

}  // namespace
