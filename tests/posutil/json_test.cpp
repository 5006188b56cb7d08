// SPDX-License-Identifier: MIT
// JSON to property objects and back.

#include <iterator>
#include <random>

#include "Posutil.h"

namespace {

Outcome Convert(const std::string& json, const std::string& to,
                const std::vector<std::string>& options = {}) {
  std::vector<std::string> arguments = {"print", "--from", "json", "--to", to, "-"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return RunPosutil(arguments, json);
}

// The JSON of each document on a line.
Outcome Lines(const std::string& json, const std::vector<std::string>& options = {}) {
  std::vector<std::string> arguments = {"--all"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return Convert(json, "json", arguments);
}

// Strings with characters that need a look after 0 to 40 that do not.
std::string UnusualCharactersAtEveryPlace() {
  std::string json = "[";
  for (std::size_t i = 0; i <= 40; ++i) {
    json += (i > 0 ? ",\"" : "\"") + std::string(i, 'x') + "\\\"\u00E9\\u0001" +
            std::string(i, 'y') + "\"";
  }
  return json + "]";
}

TEST(JsonTest, RoundTrips) {
  const struct {
    const char* why;
    std::string in;
    std::string out;
  } rows[] = {
      {"whole numbers without an exponent", "[0,-1,100000,1e5,9007199254740991]",
       "[0,-1,100000,100000,9007199254740991]"},
      {"negative zero keeps its sign", "[-0,-0.0,0]", "[-0.0,-0.0,0]"},
      {"the shortest digits", "[0.1,1e300,5e-324,1.7976931348623157e308]",
       "[0.1,1e+300,5e-324,1.7976931348623157e+308]"},
      {"digits that no double needs, and zeros",
       "[0.30000000000000004,0.10000000000000000,9007199254740992.0,0.300000000000000040]",
       "[0.30000000000000004,0.1,9007199254740992,0.30000000000000004]"},
      {"more digits, all of them right", "0.1000000000000000055511151231257827", "0.1"},
      {"large integers that a double holds",
       "[-9223372036854775808,18446744073709549568,999999999999999,1000000000000000]",
       "[-9223372036854775808,18446744073709549568,999999999999999,1000000000000000]"},
      {"the limits of 32 bits", "[4294967295,4294967296,-4294967296]",
       "[4294967295,4294967296,-4294967296]"},
      {"an integer beyond 64 bits", "100000000000000000000", "1e+20"},
      {"members in the order of their keys", R"({"b":1,"a":{"d":[],"c":{}}})",
       R"({"a":{"c":{},"d":[]},"b":1})"},
      {"escapes", R"("\"\\\/\b\f\n\r\t\u001f\u007fé\ud83d\uDE00")",
       "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u001f\x7F\u00E9\U0001F600\""},
      {"characters at every place", UnusualCharactersAtEveryPlace(),
       UnusualCharactersAtEveryPlace()},
      {"empty slots, at the end too", "[null,1,null,null,2,null,null]",
       "[null,1,null,null,2,null,null]"},
      {"nothing but empty slots", "[[null],[null,null]]", "[[null],[null,null]]"},
      {"equal strings at many places", R"([["s","s"],{"s":"s"}])", R"([["s","s"],{"s":"s"}])"},
      {"Unicode strings", R"({"$unicode":"a\u00e9\ud83d\ude00"})",
       "{\"$unicode\":\"a\u00E9\U0001F600\"}"},
      {"binary data", R"([{"$binary":"t","base64":"AAEC/w=="},{"base64":"","$binary":""}])",
       R"([{"$binary":"t","base64":"AAEC/w=="},{"$binary":"","base64":""}])"},
      {"a dictionary that holds binary data like a tag",
       R"({"$object":{"$object":{"$binary":"t","base64":"AA=="}}})",
       R"({"$object":{"$object":{"$binary":"t","base64":"AA=="}}})"},
      {"members that only begin like tags", R"([{"$x":1},{"base64":"AA==","c":1}])",
       R"([{"$x":1},{"base64":"AA==","c":1}])"},
      {"a byte order mark", "\xEF\xBB\xBF[]", "[]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Lines(row.in), (Outcome{0, row.out + "\n", ""}));
    EXPECT_EQ(Lines(row.out), (Outcome{0, row.out + "\n", ""}));
  }
  EXPECT_EQ(
      Convert(R"([{"$unicode":"a"},{"$object":{"$unicode":"a"}},[],{"b":[1]}])", "json").fOut,
      "[\n  {\"$unicode\": \"a\"},\n  {\"$object\": {\n    \"$unicode\": \"a\"\n  }},\n  [],\n"
      "  {\n    \"b\": [\n      1\n    ]\n  }\n]\n");
}

// What is one in text notation stays a dictionary, and what is one in JSON is never another value.
TEST(JsonTest, DictionariesThatLookLikeTags) {
  const struct {
    const char* text;
    const char* json;
  } rows[] = {
      {"< ($unicode) x b 1 >", R"({"$unicode":"x","b":1})"},
      {"< ($unicode) 1 >", R"({"$unicode":1})"},
      {"< ($unicode) x >", R"({"$object":{"$unicode":"x"}})"},
      {"< ($binary) t >", R"({"$binary":"t"})"},
      {"< ($binary) t base64 A >", R"({"$binary":"t","base64":"A"})"},
      {"< ($binary) t base64 (AB==) >", R"({"$binary":"t","base64":"AB=="})"},
      {"< ($binary) t base64 (A*==) >", R"({"$binary":"t","base64":"A*=="})"},
      {"< ($binary) t base64 (AA==) >", R"({"$object":{"$binary":"t","base64":"AA=="}})"},
      {"< ($binary) t base64 (AA==) c 1 >", R"({"$binary":"t","base64":"AA==","c":1})"},
      {"< base64 (AA==) >", R"({"base64":"AA=="})"},
      {"< ($object) 1 >", R"({"$object":1})"},
      {"< ($object) < a 1 > >", R"({"$object":{"a":1}})"},
      {"< ($object) `0041` >", R"({"$object":{"$object":{"$unicode":"A"}}})"},
      {"< ($object) `0041` b 1 >", R"({"$object":{"$unicode":"A"},"b":1})"},
      {"< ($object) < ($unicode) x > >", R"({"$object":{"$object":{"$object":{"$unicode":"x"}}}})"},
      {"< ($object) < ($unicode) x > b 1 >", R"({"$object":{"$object":{"$unicode":"x"}},"b":1})"},
      {"[ < ($object) < ($object) < ($unicode) 1 > > > < ($unicode) y > ]",
       R"([{"$object":{"$object":{"$unicode":1}}},{"$object":{"$unicode":"y"}}])"},
      {"< ($json) true >", R"({"$json":"true"})"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const Outcome json = RunPosutil({"get", "--from", "text", "--to", "json", "-", "v"},
                                    std::string("< v ") + row.text + " >");
    EXPECT_EQ(json, (Outcome{0, std::string(row.json) + "\n", ""}));
    EXPECT_EQ(RunPosutil({"get", "--from", "text", "--to", "text", "-", "v"},
                         std::string("< v ") + row.text + " >"),
              RunPosutil({"print", "--all", "--from", "json", "--to", "text", "-"}, json.fOut));
  }
}

TEST(JsonTest, Losses) {
  const std::string digits = "3.14159265358979323846";
  const std::string both = R"({"t":true,"n":null,)"
                           "\n"
                           R"("a":1,"a":[false,true,null,)" +
                           digits + R"(,9007199254740993,1e-400,-9007199254740993]})";
  const std::vector<std::string> losses = {
      "<stdin>:1:6: ",  "true is read as the string \"true\" (2 more)\n",
      "<stdin>:1:15: ", "a member with the value null is dropped\n",
      "<stdin>:2:7: ",  "the key \"a\" is repeated; only its last value counts\n",
      "<stdin>:2:51: ", "the number 9007199254740993 is read as 9007199254740992 (1 more)\n",
      "<stdin>:2:68: ", "the number 1e-400 is read as 0\n",
      "<stdin>:2:28: ", "the number " + digits + " is read as 3.141592653589793\n"};
  std::string warnings;
  std::string errors;
  for (std::size_t i = 0; i < losses.size(); i += 2) {
    warnings += losses[i] + "warning: " + losses[i + 1];
    errors += losses[i] + losses[i + 1];
  }
  const Outcome warned = {0,
                          R"({"a":["false","true",null,3.141592653589793,9007199254740992,0,)"
                          R"(-9007199254740992],"t":"true"})"
                          "\n",
                          warnings};
  EXPECT_EQ(Lines(both), warned);
  EXPECT_EQ(Lines(both, {"--loss=warn"}), warned);
  EXPECT_EQ(Lines(both, {"--loss=error"}),
            (Outcome{3, "",
                     errors + "Use --loss=warn to accept this, --loss=keep to keep the "
                              "values.\n"}));
  EXPECT_EQ(Lines("[1]", {"--loss=error"}), (Outcome{0, "[1]\n", ""}));
  // Subnormal numbers have few digits, or one.
  EXPECT_EQ(Lines("[5e-324,4.94e-324,1e-310,7e-324,1.2345e-320]"),
            (Outcome{0, "[5e-324,5e-324,1e-310,5e-324,1.2347e-320]\n",
                     "<stdin>:1:26: warning: the number 7e-324 is read as 5e-324 (1 more)\n"}));
  // A member that null has removed is gone, whatever follows it.
  EXPECT_EQ(Lines(R"({"a":1,"a":null,"b":1,"c":null,"c":2,"d":null,"e":3})").fOut,
            "{\"b\":1,\"c\":2,\"e\":3}\n");
}

TEST(JsonTest, MuchSpaceAfterAnIncompleteDocument) {
  const std::string space(200000, ' ');
  const std::string line = "\n  [1," + std::string(30, ' ') + "...\n     ^\n";
  EXPECT_EQ(RunPosutil({"print", "--from", "json", "-"}, "[1," + space).fErr,
            "<stdin>:1:4: unexpected end of input; expected a value (at [1])" + line);
  EXPECT_EQ(FirstMessage(RunPosutil({"print", "--from", "typea", "-"},
                                    "POSStreamerTypeA_Version1.0 [ #1 " + space))
                .substr(0, 14),
            "<stdin>:1:33: ");
}

TEST(JsonTest, LossesBeforeAFailure) {
  const Outcome outcome = Lines("[true]\n[", {"--all"});
  EXPECT_EQ(outcome.fStatus, 3);
  EXPECT_EQ(FirstMessage(outcome), "<stdin>:1:2: warning: true is read as the string \"true\"");
}

TEST(JsonTest, RepeatedKeysAmongMany) {
  std::string json = "{";
  for (int i = 0; i < 100; ++i) json += "\"k" + std::to_string(i) + "\":1,";
  EXPECT_EQ(Convert(json + "\"x\":1}", "json").fErr, "");
  EXPECT_EQ(Convert(json + "\"k99\":1}", "json").fErr,
            "<stdin>:1:792: warning: the key \"k99\" is repeated; only its last value counts\n");
}

TEST(JsonTest, KeepsWhatObjectsDoNotHave) {
  const std::string rows[] = {
      "[1.0000000000000001,9007199254740993.0,9007199254740993e0,90071992547409930e-1]", "true",
      "null", R"([true,false,null,9007199254740993,1e-400,1e999,-1e999])",
      R"({"a":null,"b":[true,{"c":3.14159265358979323846}]})",
      // Documents that look like kept values.
      R"({"$json":"true"})", R"({"$json":"1 "})", R"({"$json":"x"})", R"({"$json":true})",
      R"({"$json":{"$json":"true"}})", R"({"$json":{"$json":true}})",
      R"({"$json":{"$json":{"$json":null}}})", R"({"$json":"true","b":null})",
      R"({"$json":{"a":null}})", R"({"$json":[true]})", R"({"$object":{"$json":"true"}})",
      R"({"$object":{"$unicode":true}})", R"({"$object":{"$object":{"$unicode":"x"}}})",
      R"({"$json":{"$unicode":"x"}})"};
  for (const std::string& json : rows) {
    SCOPED_TRACE(json);
    const Outcome typeA =
        RunPosutil({"convert", "--loss=keep", "--from", "json", "--to", "typea", "-", "-"}, json);
    EXPECT_EQ(typeA.fErr, "");
    EXPECT_EQ(RunPosutil({"print", "--all", "--loss=keep", "--from", "typea", "--to", "json", "-"},
                         typeA.fOut),
              (Outcome{0, json + "\n", ""}));
  }
  EXPECT_EQ(RunPosutil({"get", "--loss=keep", "--from", "json", "--to", "text", "-", "a"},
                       R"({"a":[true,{"$json":"true"}]})"),
            (Outcome{0, "[< ($json) true > < ($json) < ($json) true > >]\n", ""}));
  EXPECT_EQ(Convert(R"([{"$json":"true"}])", "json", {"--loss=keep"}).fOut,
            "[\n  {\n    \"$json\": \"true\"\n  }\n]\n");
  EXPECT_EQ(Lines(R"([{"a":1,"b":2,"a":3}])", {"--loss=keep"}),
            (Outcome{3, "",
                     "<stdin>:1:15: the key \"a\" is repeated, and --loss=keep cannot keep both "
                     "values; --loss=warn reads the last one (at [0].a)\n"
                     "  [{\"a\":1,\"b\":2,\"a\":3}]\n                ^\n"}));
}

// A JSON value of tags and values that look like a part of one.
std::string RandomValue(std::mt19937& random, int depth) {
  static const char* const kScalars[] = {"\"x\"", "\"true\"", "\"AA==\"", "\"1 \"",
                                         "true",  "null",     "1",        "12345678901234567891"};
  static const char* const kKeys[] = {"$binary", "$json", "$object", "$unicode", "a", "base64"};
  if (depth == 0 || random() % 3 == 0) return kScalars[random() % std::size(kScalars)];
  const std::size_t wanted = random() % 4 < 3 ? 1 : random() % 3;
  std::string json = "{";
  std::size_t count = 0;
  for (std::size_t i = random() % std::size(kKeys); i < std::size(kKeys) && count < wanted; ++i) {
    json += (count++ > 0 ? ",\"" : "\"") + std::string(kKeys[i]) + "\":";
    json += RandomValue(random, depth - 1);
  }
  return json + "}";
}

TEST(JsonTest, RandomTagsRoundTrip) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  std::string json;
  for (int i = 0; i < 2000; ++i) json += RandomValue(random, 6) + "\n";
  const auto convert = [](const std::string& from, const std::string& to, const std::string& loss,
                          const std::string& input) {
    return RunPosutil({"convert", "--all", "--loss", loss, "--from", from, "--to", to, "-", "-"},
                      input)
        .fOut;
  };
  const std::string typeA = convert("json", "typea", "keep", json);
  EXPECT_EQ(convert("typea", "json", "keep", typeA), json);
  EXPECT_EQ(convert("json", "typea", "warn", convert("typea", "json", "warn", typeA)), typeA);
}

TEST(JsonTest, RejectsWhatObjectsCannotHold) {
  const struct {
    std::string in;
    std::string message;
  } rows[] = {
      {"null", "1:1: null is not an object\n  null\n  ^\n"},
      {R"({"a":[1,{"b":"x\u0000"}]})",
       "1:14: the string contains a zero character (at a[1].b)\n"
       "  {\"a\":[1,{\"b\":\"x\\u0000\"}]}\n               ^\n"},
      {"{\n\"b\\u0000\":1}", "2:1: a key contains a zero character\n  \"b\\u0000\":1}\n  ^\n"},
      {"1" + std::string(400, '0'),
       "1:1: the number 10000000000000000000... is too large; --loss=keep keeps it\n  1" +
           std::string(29, '0') + "...\n  ^\n"},
      {R"([1,{"a":-1e999}])",
       "1:9: the number -1e999 is too large; --loss=keep keeps it (at [1].a)\n  "
       "[1,{\"a\":-1e999}]\n          ^\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    EXPECT_EQ(Convert(row.in, "json"), (Outcome{3, "", "<stdin>:" + row.message}));
  }
}

TEST(JsonTest, SyntaxErrorsShowTheirPlace) {
  const struct {
    const char* why;
    std::string in;
    std::string err;
  } rows[] = {
      {"empty input", "", "1:1: unexpected end of input; expected a value\n  \n  ^\n"},
      {"an early end is after the last character, not on the next line", "{\"a\":[1\n\n ",
       "1:8: unexpected end of input; expected ',' or ']' (at a[1])\n  {\"a\":[1\n         ^\n"},
      {"on a later line, after a tab and wide characters",
       "[1,\r\n\t\"\u00E9\U0001F600\u65E5\" 2]\r\n",
       "2:8: unexpected number; expected ',' or ']' (at [2])\n"
       "   \"\u00E9\U0001F600\u65E5\" 2]\n           ^\n"},
      {"control and bidirectional characters", "[\"\u202Ea\"\x1B]",
       "1:6: unexpected '\\x1b'; expected ',' or ']' (at [1])\n"
       "  [\"\\u202ea\"\\x1b]\n            ^\n"},
      {"a zero byte", std::string("[1]\0x", 5),
       "1:4: unexpected text after the document (see --all)\n  [1]\\x00x\n     ^\n"},
      {"a zero byte inside", std::string("[\0]", 3),
       "1:2: unexpected zero character; expected a value or ']' (at [0])\n  [\\x00]\n   ^\n"},
      {"a word", "[1, tru]",
       "1:5: unexpected 'tru'; expected a value (at [1])\n  [1, tru]\n      ^\n"},
      {"a word at the end", "[tru",
       "1:2: unexpected 'tru'; expected a value or ']' (at [0])\n  [tru\n   ^\n"},
      {"a long word", "[trust_me_this_is_a_word]",
       "1:2: unexpected 'trust_me_this_is_a_w'; expected a value or ']' (at [0])\n"
       "  [trust_me_this_is_a_word]\n   ^\n"},
      {"no comma in an object", "{\"a\":1 \"b\"}",
       "1:8: unexpected string; expected ',' or '}'\n  {\"a\":1 \"b\"}\n         ^\n"},
      {"no comma before a sign", "[1 -2]",
       "1:4: unexpected number; expected ',' or ']' (at [1])\n  [1 -2]\n     ^\n"},
      {"a key that is not a string", "{a:1}",
       "1:2: unexpected 'a'; expected a string or '}'\n  {a:1}\n   ^\n"},
      {"a comma before the end", "{\"a\":1,}",
       "1:8: unexpected '}'; expected a string\n  {\"a\":1,}\n         ^\n"},
      {"no colon", "{\"a\" 1}",
       "1:6: unexpected number; expected ':' (at a)\n  {\"a\" 1}\n       ^\n"},
      {"the wrong bracket", "[1}",
       "1:3: unexpected '}'; expected ',' or ']' (at [1])\n  [1}\n    ^\n"},
      {"a leading zero", "[01]", "1:2: malformed number (at [0])\n  [01]\n   ^\n"},
      {"not two documents", "1.5-3", "1:1: malformed number\n  1.5-3\n  ^\n"},
      {"nor these", "1+3", "1:1: malformed number\n  1+3\n  ^\n"},
      {"two points", "1.2.3", "1:1: malformed number\n  1.2.3\n  ^\n"},
      {"a number and a letter", "1x", "1:1: malformed number\n  1x\n  ^\n"},
      {"digits missing", "[1.e1]", "1:2: malformed number (at [0])\n  [1.e1]\n   ^\n"},
      {"an unfinished number", "-", "1:2: unexpected end of input in a number\n  -\n   ^\n"},
      {"an unfinished string", "[\"a",
       "1:4: unexpected end of input in a string (at [0])\n"
       "  [\"a\n     ^\n"},
      {"a line end in a string", "[\"a\n\"]",
       "1:4: a control character in a string; write it as an escape such as \\u000a (at [0])\n"
       "  [\"a\n     ^\n"},
      {"an unfinished escape", "\"a\\u12",
       "1:7: unexpected end of input in a string\n  \"a\\u12\n        ^\n"},
      {"a byte order mark", "\xEF\xBB\xBF{\"a\":tru}",
       "1:6: unexpected 'tru'; expected a value (at a)\n  {\"a\":tru}\n       ^\n"},
      {"an unknown escape", "\"\\q\"", "1:2: unknown escape in a string\n  \"\\q\"\n   ^\n"},
      {"too few digits", "\"\\u12\"",
       "1:2: expected four hexadecimal digits after \\u\n  \"\\u12\"\n   ^\n"},
      {"a lone surrogate", R"({"a":{"b":"\udc00"}})",
       "1:12: half of a surrogate pair in a string (at a.b)\n"
       "  {\"a\":{\"b\":\"\\udc00\"}}\n             ^\n"},
      {"invalid UTF-8", "[\"\xC3(\"]",
       "1:3: invalid UTF-8 in a string (at [0])\n  [\"\\xc3(\"]\n    ^\n"},
      {"in the middle of a long line",
       "[\"" + std::string(300, 'x') + "\" 1," + std::string(300, ' ') + "]",
       "1:305: unexpected number; expected ',' or ']' (at [1])\n  ..." + std::string(48, 'x') +
           "\" 1," + std::string(28, ' ') + "...\n  " + std::string(53, ' ') + "^\n"},
      {"far past the start of the window",
       "[\"\u00E9\",\n" + std::string(600000, ' ') + "\n" + std::string(300000, ' ') + "1 2]",
       "3:300003: unexpected number; expected ',' or ']' (at [2])\n  ..." + std::string(48, ' ') +
           "1 2]\n" + std::string(55, ' ') + "^\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Convert(row.in, "json"), (Outcome{3, "", "<stdin>:" + row.err}));
  }
}

// Each token stands across the end of a piece once.
TEST(JsonTest, TokensAcrossTheEndsOfPieces) {
  const std::string tokens = R"([12345,true,"é\ud83d\ude00日本",null,{"key\n":-1.5e-3},"plain"])";
  const std::string out =
      "[12345,\"true\",\"é\U0001F600日本\",null,{\"key\\n\":-0.0015},\"plain\"]";
  for (std::size_t i = 0; i <= tokens.size(); ++i) {
    const Outcome outcome = Lines(std::string(65536 - i, ' ') + tokens);
    EXPECT_EQ(outcome.fOut, out + "\n") << i;
    EXPECT_EQ(outcome.fErr.rfind("<stdin>:1:" + std::to_string(65536 - i + 8), 0), 0U) << i;
  }
  const std::string longText(300'000, 'x');
  EXPECT_TRUE(Lines("[\"" + longText + "\\t" + longText + "\"]") ==
              (Outcome{0, "[\"" + longText + "\\t" + longText + "\"]\n", ""}));
}

TEST(JsonTest, LongInputsTakeLinearTime) {
  std::string members;
  for (int i = 0; i < 100000; ++i) members += "\"k" + std::to_string(i) + "\":1,";
  for (int i = 0; i < 100000; ++i) members += "\"n" + std::to_string(i) + "\":null,";
  const struct {
    std::string name, in, out;
  } rows[] = {
      {"digits", "0." + std::string(32 << 20, '0'), "0\n"},
      {"null members", "{" + members + "\"a\":1}", ""},
  };
  for (const auto& [name, in, out] : rows) {
    SCOPED_TRACE(name);
    const Outcome outcome = RunPosutil({"print", "--from", "json", "--to", "text", "-"}, in,
                                       {.fPrefix = WithinSeconds(6)});
    EXPECT_EQ(outcome.fStatus, 0);
    EXPECT_EQ(outcome.fOut.substr(0, out.size()), out);
  }
}

// The last read finds no more bytes, yet moves those of the number.
TEST(JsonTest, NumbersAtTheEndOfAFullWindow) {
  const std::string space(65536 - 3, ' ');
  EXPECT_EQ(RunPosutil({"print", "--from", "json", "--to", "text", "-"}, space + "123"),
            (Outcome{0, "123\n", ""}));
}

TEST(JsonTest, RejectsWhatJsonCannotHold) {
  const struct {
    const char* in;
    const char* message;
  } rows[] = {
      {"< a [1 (x\xFFy)] >", "8: a[1]: invalid UTF-8"},
      {"< a [1 (x\xC3)] >", "8: a[1]: invalid UTF-8"},
      {"< a [(\xED\xA0\x80)] >", "6: a[0]: invalid UTF-8"},
      {"< a < (\xFF) 1 > >", "11: a.\\xff: invalid UTF-8"},
      {"[1 [`0041D800`]]", "5: [1][0]: the Unicode string has a lone surrogate"},
      {"[`DC00D800`]", "2: [0]: the Unicode string has a lone surrogate"},
      {"[`E000D800FFFF`]", "2: [0]: the Unicode string has a lone surrogate"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    const Outcome outcome = RunPosutil({"print", "--from", "text", "--to", "json", "-"}, row.in);
    EXPECT_EQ(outcome.fStatus, 3);
    EXPECT_EQ(FirstMessage(outcome), std::string("<stdin>:1:") + row.message);
  }
}

}  // namespace
