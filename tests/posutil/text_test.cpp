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
      {R"({"a":[1,null]})", "a[1]: text notation cannot hold an empty slot"},
      {R"({"a":{"$binary":"t","base64":""}})", "a: text notation cannot hold binary data"},
      {"[1e99,1e100]", "[1]: the number needs an exponent, which text notation does not have"},
      {"[1e-98,1e-99]", "[1]: the number needs an exponent, which text notation does not have"},
      {"[\"" + std::string(100, 'a') + "\",\"" + std::string(101, 'a') + "\"]", "[1]: " + limit},
      {"[\"" + std::string(50, ')') + "\",\"" + std::string(51, ')') + "\"]",
       "[1]: " + limit + ", including backslashes"},
      {"{\"" + std::string(101, 'k') + "\":1}", std::string(101, 'k') + ": " + limit},
      {R"([{"$unicode":")" + std::string(100, 'a') + R"("},{"$unicode":")" + std::string(101, 'a') +
           "\"}]",
       "[1]: text notation limits Unicode strings to 100 units"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    EXPECT_EQ(Print("json", "text", row.in),
              (Outcome{3, "", "posutil: <stdin>: " + row.message + "\n"}));
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

TEST(TextTest, SyntaxErrorsShowWhereTheReaderStopped) {
  const std::string ends = "syntax error at the end of the text\n";
  const struct {
    const char* why;
    std::string in;
    std::string err;
  } rows[] = {
      {"empty", "", "1:1: no object in the text\n  \n  ^\n"},
      {"blank", " \n ", "2:2: no object in the text\n   \n   ^\n"},
      {"unclosed", "< a\n  [1", "2:5: " + ends + "    [1\n      ^\n"},
      {"an unclosed literal", "(ab", "1:4: " + ends + "  (ab\n     ^\n"},
      {"no token", "< a\n\t\"x\" >", "2:2: syntax error\n   \"x\" >\n   ^\n"},
      {"after the object", "[1] x", "1:5: syntax error\n  [1] x\n      ^\n"},
      {"a zero character after the object", std::string("[1]\0x", 5),
       "1:4: a zero character in the text\n  [1]?x\n     ^\n"},
      {"a zero character inside", std::string("[1\0]", 4),
       "1:3: a zero character in the text\n  [1?]\n    ^\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Print("text", "tree", row.in), (Outcome{3, "", "<stdin>:" + row.err}));
  }
}

TEST(TreeTest, ShowsEveryKindUnambiguously) {
  const std::string json =
      R"({"n":-1.5,"s":"a\"\\\n\u0085é","u":{"$unicode":"é"},"a":[1,null,[]],"d":{"x":1},"":1,)"
      R"("b":[{"$binary":"t","base64":""},{"$binary":"t","base64":"AA=="},)"
      R"({"$binary":"t","base64":"AAECAwQFBgcICQoLDA0OD/8="}],"c: d":2,"[0]":3})";
  const std::string tree =
      "dictionary\n"
      "\"\": 1\n"
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
      "u: u\"\u00E9\"\n";
  EXPECT_EQ(Print("json", "tree", json), (Outcome{0, tree, ""}));
  EXPECT_EQ(Print("text", "tree", "[`D800` (\xFF)]"),
            (Outcome{0, "array of 2\n[0]: units d800\n[1]: \"\\xff\"\n", ""}));
}

}  // namespace
