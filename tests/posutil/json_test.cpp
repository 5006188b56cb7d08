// JSON to property objects and back.

#include "Posutil.h"

namespace {

Outcome Convert(const std::string& json, const std::string& to) {
  return RunPosutil({"print", "--from", "json", "--to", to, "-"}, json);
}

TEST(JsonTest, RoundTrips) {
  const struct {
    const char* why;
    const char* in;
    std::string out;
  } rows[] = {
      {"whole numbers without an exponent", "[0,-1,100000,1e5,9007199254740991]",
       "[\n  0,\n  -1,\n  100000,\n  100000,\n  9007199254740991\n]"},
      {"negative zero keeps its sign", "[-0,-0.0,0]", "[\n  -0.0,\n  -0.0,\n  0\n]"},
      {"the shortest digits", "[0.1,1e300,5e-324,1.7976931348623157e308]",
       "[\n  0.1,\n  1e+300,\n  5e-324,\n  1.7976931348623157e+308\n]"},
      {"large integers that a double holds", "[-9223372036854775808,18446744073709549568]",
       "[\n  -9223372036854775808,\n  18446744073709549568\n]"},
      {"an integer beyond 64 bits", "100000000000000000000", "1e+20"},
      {"members in the order of their keys", R"({"b":1,"a":{"d":[],"c":{}}})",
       "{\n  \"a\": {\n    \"c\": {},\n    \"d\": []\n  },\n  \"b\": 1\n}"},
      {"escapes", R"("\"\\\/\b\f\n\r\t\u001f\u007fé\ud83d\ude00")",
       "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u001f\x7F\u00E9\U0001F600\""},
      {"truth values become strings", "[true,false]", "[\n  \"true\",\n  \"false\"\n]"},
      {"empty slots, at the end too", "[null,1,null,null,2,null,null]",
       "[\n  null,\n  1,\n  null,\n  null,\n  2,\n  null,\n  null\n]"},
      {"nothing but empty slots", "[[null],[null,null]]",
       "[\n  [\n    null\n  ],\n  [\n    null,\n    null\n  ]\n]"},
      {"null removes a member", R"({"a":null,"b":{"c":null}})", "{\n  \"b\": {}\n}"},
      {"the last of two members wins", R"({"a":1,"a":"x","b":2,"b":null})", "{\n  \"a\": \"x\"\n}"},
      {"equal strings at many places", R"([["s","s"],{"s":"s"}])",
       "[\n  [\n    \"s\",\n    \"s\"\n  ],\n  {\n    \"s\": \"s\"\n  }\n]"},
      {"Unicode strings", R"({"$unicode":"a\u00e9\ud83d\ude00"})",
       "{\"$unicode\": \"a\u00E9\U0001F600\"}"},
      {"binary data", R"([{"$binary":"t","base64":"AAEC/w=="},{"base64":"","$binary":""}])",
       "[\n  {\"$binary\": \"t\", \"base64\": \"AAEC/w==\"},\n"
       "  {\"$binary\": \"\", \"base64\": \"\"}\n]"},
      {"base64 alone is a member like any other", R"({"base64":"AAEC","$x":1})",
       "{\n  \"$x\": 1,\n  \"base64\": \"AAEC\"\n}"},
      {"a byte order mark", "\xEF\xBB\xBF[]", "[]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const Outcome once = Convert(row.in, "json");
    EXPECT_EQ(once, (Outcome{0, row.out + "\n", ""}));
    EXPECT_EQ(Convert(once.fOut, "json"), once);
  }
}

TEST(JsonTest, RejectsWhatObjectsCannotHold) {
  const std::string tags =
      "the keys \"$unicode\" and \"$binary\" are reserved for values that JSON does not have";
  const std::string strings =
      "the value of \"$unicode\", \"$binary\" or \"base64\" must be a string";
  const std::string inexact = "a number cannot represent this integer exactly";
  const struct {
    const char* in;
    std::string message;
  } rows[] = {
      {"null", "the document: null is not an object"},
      {R"({"a":[1,{"b":"x\u0000"}]})", "a[1].b: the string contains a zero character"},
      {R"({"a":[1,{"b\u0000":1}]})", "a[1]: a key contains a zero character"},
      {R"([{"$unicode":"\u0000"}])", "[0]: the string contains a zero character"},
      {R"([1,[],[9007199254740993]])", "[2][0]: " + inexact},
      {R"({"a":-9007199254740993})", "a: " + inexact},
      {R"({"b":{},"a":18446744073709551615})", "a: " + inexact},
      {R"({"a":[null,null,9223372036854775807]})", "a[2]: " + inexact},
      {R"([123456789012345678901])", "[0]: " + inexact},
      {R"({"a":{"$unicode":"x","b":1}})", "a: " + tags},
      {R"({"a":{"b":1,"$unicode":"x"}})", "a: " + tags},
      {R"({"a":{"$unicode":"x","base64":""}})", "a: " + tags},
      {R"({"a":{"$binary":"x"}})", "a: " + tags},
      {R"({"a":{"base64":1,"$binary":"x"}})", "a: " + tags},
      {R"({"a":{"base64":"","b":1,"$binary":"x"}})", "a: " + tags},
      {R"({"a":{"$unicode":1}})", "a: " + strings},
      {R"({"a":{"$unicode":null}})", "a: " + strings},
      {R"({"a":{"$binary":[]}})", "a: " + strings},
      {R"({"$binary":"x","base64":{}})", "the document: " + strings},
      {R"([{"$binary":"x","base64":"AA"}])", "[0]: malformed base64"},
      {R"([{"$binary":"x","base64":"A==="}])", "[0]: malformed base64"},
      {R"([{"$binary":"x","base64":"AB=="}])", "[0]: malformed base64"},
      {R"([{"$binary":"x","base64":"AA=A"}])", "[0]: malformed base64"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    EXPECT_EQ(Convert(row.in, "json"), (Outcome{3, "", "posutil: <stdin>: " + row.message + "\n"}));
  }
}

TEST(JsonTest, SyntaxErrorsShowTheirPlace) {
  const std::string parsing = "syntax error while parsing ";
  const struct {
    const char* why;
    std::string in;
    std::string err;
  } rows[] = {
      {"empty input", "",
       "1:1: " + parsing +
           "value - unexpected end of input; expected '[', '{', or a literal\n"
           "  \n  ^\n"},
      {"on a later line, after a tab and wide characters", "[1,\r\n\t\"\u00E9\U0001F600\" 2]\r\n",
       "2:7: " + parsing +
           "array - unexpected number literal; expected ']' (at [2])\n"
           "   \"\u00E9\U0001F600\" 2]\n        ^\n"},
      {"more than one value", "[] []",
       "1:4: " + parsing +
           "value - unexpected '['; expected end of input\n"
           "  [] []\n     ^\n"},
      {"a lone surrogate", R"({"a":{"b":"\udc00"}})",
       "1:17: " + parsing +
           "value - invalid string: surrogate U+DC00..U+DFFF must follow "
           "U+D800..U+DBFF (at a.b)\n  {\"a\":{\"b\":\"\\udc00\"}}\n                  ^\n"},
      {"invalid UTF-8", "[\"\xC3(\"]",
       "1:4: " + parsing +
           "value - invalid string: ill-formed UTF-8 byte (at [0])\n"
           "  [\"?(\"]\n     ^\n"},
      {"too large a number", R"([1,{"a":-1e999}])",
       "1:14: the number -1e999 is too large (at [1].a)\n"
       "  [1,{\"a\":-1e999}]\n               ^\n"},
      {"in the middle of a long line",
       "[\"" + std::string(300, 'x') + "\" 1," + std::string(300, ' ') + "]",
       "1:305: " + parsing +
           "array - unexpected number literal; expected ']' (at [1])\n"
           "  ..." +
           std::string(48, 'x') + "\" 1," + std::string(28, ' ') +
           "...\n"
           "  " +
           std::string(53, ' ') + "^\n"},
      {"far past the forgotten part",
       "[\"\u00E9\",\n" + std::string(600000, ' ') + "\n" + std::string(300000, ' ') + "1 2]",
       "3:300003: " + parsing + "array - unexpected number literal; expected ']' (at [2])\n  ..." +
           std::string(48, ' ') + "1 2]\n" + std::string(55, ' ') + "^\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Convert(row.in, "json"), (Outcome{3, "", "<stdin>:" + row.err}));
  }
}

TEST(JsonTest, RejectsWhatJsonCannotHold) {
  const struct {
    const char* in;
    const char* message;
  } rows[] = {
      {"< a [1 (x\xFFy)] >", "a[1]: invalid UTF-8"},
      {"< a [1 (x\xC3)] >", "a[1]: invalid UTF-8"},
      {"< a [(\xED\xA0\x80)] >", "a[0]: invalid UTF-8"},
      {"< a < (\xFF) 1 > >", "a.\\xff: invalid UTF-8"},
      {"[1 [`0041D800`]]", "[1][0]: the Unicode string has a lone surrogate"},
      {"[`DC00D800`]", "[0]: the Unicode string has a lone surrogate"},
      {"< a [< b 1 ($unicode) 2 >] >",
       "a[0].$unicode: the keys \"$unicode\" and \"$binary\" are reserved for values that JSON "
       "does "
       "not have"},
      {"< ($binary) 2 >",
       "$binary: the keys \"$unicode\" and \"$binary\" are reserved for values that JSON does not "
       "have"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    EXPECT_EQ(RunPosutil({"print", "--from", "text", "--to", "json", "-"}, row.in),
              (Outcome{3, "", std::string("posutil: <stdin>: ") + row.message + "\n"}));
  }
}

}  // namespace
