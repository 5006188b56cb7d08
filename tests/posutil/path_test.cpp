// SPDX-License-Identifier: MIT
// Paths to values: get and paths.

#include <sstream>

#include "Folder.h"
#include "Posutil.h"

namespace {

using Arguments = std::vector<std::string>;

Outcome Get(const std::string& format, const std::string& document, const Arguments& arguments) {
  Arguments all = {"get", "--from", format, "-"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return RunPosutil(all, document);
}

Outcome Malformed(const std::string& path) {
  return {2, "", "posutil: malformed path \"" + path + "\"\n"};
}

Outcome None(const std::string& path) {
  return {1, "", "posutil: <stdin>: no value at \"" + path + "\"\n"};
}

TEST(PathTest, LeadsToAValueOrNowhere) {
  const std::string keys =
      R"({"a/b":1,"m~n":2,"":{"":3,"x":4},"c.d":5,"[0]":6,"0":7,"/":8,"a":[]})";
  const struct {
    const char* why;
    std::string document;
    std::string path;
    Outcome outcome;
  } rows[] = {
      {"a slash in a key", keys, "/a~1b", {0, "1\n", ""}},
      {"a tilde in a key", keys, "/m~0n", {0, "2\n", ""}},
      {"~01 is not a slash", R"({"~1":1})", "/~01", {0, "1\n", ""}},
      {"the empty key", keys, "/", {0, "{\"\":3,\"x\":4}\n", ""}},
      {"the empty key twice", keys, "//", {0, "3\n", ""}},
      {"a point in a key", keys, "/c.d", {0, "5\n", ""}},
      {"brackets in a key", keys, "/[0]", {0, "6\n", ""}},
      {"a number as a key", keys, "/0", {0, "7\n", ""}},
      {"a key that looks like a pointer", keys, "./", {0, "8\n", ""}},
      {"an unknown escape", keys, "/m~2n", Malformed("/m~2n")},
      {"an unfinished escape", keys, "/m~", Malformed("/m~")},
      {"the end of an array is not a value", keys, "/a/-", None("/a/-")},
      {"an index in an array", "[1,[2,3]]", "/1/0", {0, "2\n", ""}},
      {"a leading zero is not an index", "[1,2]", "/01", None("/01")},
      {"nor is a sign", "[1,2]", "/+1", None("/+1")},
      {"an index of many digits", "[1]", "/18446744073709551616", None("/18446744073709551616")},
      {"an array at the root", R"([1,{"x":[2]}])", "[1].x[0]", {0, "2\n", ""}},
      {"only an index", "[1,2]", "[1]", {0, "2\n", ""}},
      {"a list is not several paths", "[1,2]", "[0,1]", Malformed("[0,1]")},
      {"an empty slot", "[null]", "[0]", None("[0]")},
      {"an index is not modulo 2^32", "[1,2]", "[4294967297]", None("[4294967297]")},
      {"a scalar at the root", "5", "", {0, "5\n", ""}},
      {"an array at the root as a whole", "[5]", "", {0, "[5]\n", ""}},
      {"the empty path of a dictionary is its empty key", R"({"":5})", "", {0, "5\n", ""}},
      {"through a scalar", R"({"a":5})", "a.b", None("a.b")},
      {"through a scalar, as a pointer", R"({"a":5})", "/a/b", None("/a/b")},
      {"a key in an array", "[5]", "a", None("a")},
      {"an index in a dictionary", keys, "c[0]", None("c[0]")},
      {"malformed", "[[5]]", "[0]x", Malformed("[0]x")},
      {"unclosed", "[[5]]", "[0][0", Malformed("[0][0")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Get("json", row.document, {row.path}), row.outcome);
  }
}

TEST(PathTest, OptionsOfGet) {
  const std::string document = R"({"n":1,"s":"x","u":{"$unicode":"y"},"a":[true],"b.c":2,)"
                               R"("d":{"$binary":"t","base64":""}})";
  const std::string wrong = "posutil: <stdin>: \"";
  const struct {
    Arguments arguments;
    Outcome outcome;
  } rows[] = {
      {{"--type", "number", "n", "/b.c"}, {0, "1\n2\n", ""}},
      {{"--type", "number", "s", "n"}, {1, "1\n", wrong + "s\" is a string, not a number\n"}},
      {{"--type", "string", "u"}, {1, "", wrong + "u\" is a Unicode string, not a string\n"}},
      {{"--type", "dict", "a"}, {1, "", wrong + "a\" is an array, not a dictionary\n"}},
      {{"--type", "array", "d"}, {1, "", wrong + "d\" is binary data, not an array\n"}},
      {{"--type", "array", "a"}, {0, "[\"true\"]\n", ""}},
      {{"--default", "none", "x", "n"}, {0, "none\n1\n", ""}},
      {{"--default", "", "x"}, {0, "\n", ""}},
      {{"--default", "none", "--type", "number", "s"},
       {1, "", wrong + "s\" is a string, not a number\n"}},
      {{"-0", "n", "u", "a", "--to", "text"}, {0, std::string("1\0`0079`\0[true]\0", 16), ""}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    Outcome outcome = Get("json", document, row.arguments);
    const std::string warning = outcome.fErr.substr(0, outcome.fErr.find('\n') + 1);
    EXPECT_NE(warning.find("true is read as"), std::string::npos);
    outcome.fErr.erase(0, warning.size());
    EXPECT_EQ(outcome, row.outcome);
  }
}

TEST(PathTest, KeptValuesHaveTheirKind) {
  EXPECT_EQ(Get("json", R"({"a":true,"i":9007199254740993,"j":-9007199254740993})",
                {"--loss=keep", "--type", "number", "a", "i", "j"}),
            (Outcome{1, "9007199254740993\n-9007199254740993\n",
                     "posutil: <stdin>: \"a\" is true, not a number\n"}));
  EXPECT_EQ(Get("json", "null", {"--loss=keep", ""}), (Outcome{0, "null\n", ""}));
}

TEST(PathTest, AValueWithoutAFormHasItsPlace) {
  const std::string document = "< a 1 b [1 `D800`] c `DC00` >";
  const std::string lone = "the Unicode string has a lone surrogate\n  " + document + "\n  ";
  const struct {
    Arguments arguments;
    std::string err;
  } rows[] = {
      {{"a", "b"}, "<stdin>:1:12: b[1]: " + lone + "           ^\n"},
      {{"c"}, "<stdin>:1:22: c: " + lone + "                     ^\n"},
      {{"--to", "json", "/b/1"}, "<stdin>:1:12: b[1]: " + lone + "           ^\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Get("text", document, row.arguments), (Outcome{3, "", row.err}));
  }
}

Outcome Paths(const std::string& format, const std::string& document,
              const Arguments& arguments = {}) {
  Arguments all = {"paths", "--from", format, "-"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return RunPosutil(all, document);
}

TEST(PathsTest, ALineForEachValue) {
  const struct {
    const char* why;
    const char* format;
    std::string document;
    Arguments arguments;
    std::string out;
  } rows[] = {
      {"in the order of keys and indices",
       "json",
       R"({"b":[1,null,{"x":"y"},[],{}],"a":-0.5,"":"e","c.d":{"e":[1]}})",
       {},
       "/ = \"e\"\na = -0.5\nb[0] = 1\nb[1] = null\nb[2].x = \"y\"\nb[3] = []\nb[4] = {}\n"
       "/c.d/e/0 = 1\n"},
      {"as pointers",
       "json",
       R"({"a":[{"b/c":1},{}]})",
       {"--pointer"},
       "/a/0/b~1c = 1\n/a/1 = {}\n"},
      {"a scalar", "json", "5", {}, " = 5\n"},
      {"negative zero", "json", "-0.0", {}, " = -0.0\n"},
      {"an array", "json", "[[5]]", {}, "[0][0] = 5\n"},
      {"empty", "text", "< >", {}, " = {}\n"},
      {"what JSON has and objects do not",
       "json",
       R"({"t":true,"n":null,"i":12345678901234567890,"d":{"$json":"true"},"x":{"$json":"y"}})",
       {},
       "d.$json = \"true\"\ni = 12345678901234567890\nn = null\nt = true\n"
       "x.$json = \"y\"\n"},
      {"without --loss=keep, a dictionary",
       "json",
       R"({"a":{"$json":"true"}})",
       {"--loss=warn"},
       "a.$json = \"true\"\n"},
      {"tagged values and their look-alikes",
       "json",
       R"([{"$unicode":"é"},{"$binary":"t","base64":"AA=="},{"$object":{"$unicode":"x"}}])",
       {},
       "[0] = {\"$unicode\":\"é\"}\n[1] = {\"$binary\":\"t\",\"base64\":\"AA==\"}\n"
       "[2].$unicode = \"x\"\n"},
      {"what JSON cannot hold",
       "text",
       "< a (\xFF\n) b `D800` >",
       {},
       "a = \"\\xff\\x0a\"\nb = units d800\n"},
      {"what a terminal would obey",
       "json",
       R"(["\u009b\u202e\u2028\u007f"])",
       {},
       "[0] = \"\\u009b\\u202e\\u2028\\u007f\"\n"},
      {"a value takes one line",
       "json",
       R"({"a\nb":"c\n\"\u0001\\","t":"\t\r"})",
       {},
       "a\\x0ab = \"c\\n\\\"\\u0001\\\\\"\nt = \"\\t\\r\"\n"},
      {"several documents", "json", "[1]\n[2]", {"--all"}, "1: [0] = 1\n2: [0] = 2\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Paths(row.format, row.document, row.arguments), (Outcome{0, row.out, ""}));
  }
}

// What paths prints is what get and set take.
TEST(PathsTest, EveryPathLeadsToItsValue) {
  const std::string document = R"({"":{"":1,"x":2},"a":{"":3,"b.c":4,"d":[5,[6]]},)"
                               R"("/":7,"[0]":8,"~":9,".":10,"a[":11,"0":12})";
  for (const Arguments& options : {Arguments(), Arguments{"--pointer"}}) {
    std::istringstream lines(Paths("json", document, options).fOut);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
      SCOPED_TRACE(line);
      const std::size_t end = line.find(" = ");
      const std::string path = line.substr(0, end);
      const std::string value = line.substr(end + 3);
      EXPECT_EQ(Get("json", document, {path}), (Outcome{0, value + "\n", ""}));
      const Outcome set = RunPosutil({"set", "--from", "json", "-", path, "-1"}, document);
      EXPECT_EQ(Get("json", set.fOut, {path}), (Outcome{0, "-1\n", ""}));
    }
    EXPECT_EQ(count, 12);
  }
}

TEST(FormatTest, IsGuessedFromTheEndingThenTheContent) {
  const std::string typeA = "POSStreamerTypeA_Version1.0 [#1 #2 ]";
  const struct {
    const char* why;
    std::string content;
    const char* format;  // null: none
  } rows[] = {
      {"TypeA's tag", typeA, "typea"},
      {"an object", "{\"a\":1}", "json"},
      {"after white space and a byte order mark", "\xEF\xBB\xBF \n{}", "json"},
      {"a string", "\"a\"", "json"},
      {"a number", "-1.5e3", "json"},
      {"a word of JSON", "true", "json"},
      {"a list with commas", "[ 1, 2 ]", "json"},
      {"a list of strings", "[\"a\"]", "json"},
      {"a list that both can read", "[[1] ]", "json"},
      {"an early end", "[[1", "json"},
      {"a list without commas", "[ 1 2 ]", "text"},
      {"lists without commas", "[[1] [2]]", "text"},
      {"words", "[ [a] ]", "text"},
      {"a number that JSON does not have", "[ 007 ]", "text"},
      {"one alone", "007", "text"},
      {"a dictionary in a list", "[ [ < a 1 > ] ]", "text"},
      {"a dictionary", "< a 1 >", "text"},
      {"a string in parentheses", "(a b)", "text"},
      {"a Unicode string", "`0041`", "text"},
      {"a bare word", "P", "text"},
      {"a word that begins like one of JSON", "truth", "text"},
      {"text after a byte order mark", "\xEF\xBB\xBF< a 1 >", "text"},
      {"a tag that is cut off", "POSStreamerTypeA", "typea"},
      {"after much white space", std::string(70'000, ' ') + "[1,2]", "json"},
      {"after more white space than is read", std::string(1'100'000, ' ') + "[1,2]", nullptr},
      {"a word at the end of the first look", "[" + std::string(65'532, ' ') + "true,1]", "json"},
      {"nothing", "", nullptr},
      {"white space", " \n", nullptr},
      {"something else", "%PDF-1.4", nullptr},
  };
  const Folder folder;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const std::string file = folder.Put("document", row.content);
    const std::string copy = folder.Put("copy", row.content);
    const Outcome known =
        row.format ? RunPosutil({"print", "--from", row.format, file}) : Outcome();
    const auto expected = [&](const std::string& name) {
      if (row.content.find_first_not_of(" \n") == std::string::npos) {
        return Outcome{3, "", "posutil: " + name + ": the input is empty\n"};
      }
      if (!row.format) {
        return Outcome{2, "",
                       "posutil: " + name +
                           ": cannot tell the format from the file name or the content; use "
                           "--from\n"};
      }
      Outcome outcome = known;
      if (const auto at = outcome.fErr.find(file); at == 0)
        outcome.fErr.replace(0, file.size(), name);
      return outcome;
    };
    EXPECT_EQ(RunPosutil({"print", file}), expected(file));
    EXPECT_EQ(RunPosutil({"print", "-"}, row.content), expected("<stdin>"));
    // A pipe cannot be read twice.
    EXPECT_EQ(
        RunPosutil({"print", "-"}, row.content, {.fPrefix = {"sh", "-c", "cat | \"$0\" \"$@\""}}),
        expected("<stdin>"));
  }
  EXPECT_EQ(RunPosutil({"get", folder.Put("a.txt", "< a {1} >"), "a"}).fStatus, 3);
  EXPECT_EQ(RunPosutil({"print", folder.Path("nowhere")}).fStatus, 3);
}

// A pipe that delivers a part of a document, and waits for an answer to it.
TEST(FormatTest, APipeIsNotReadFurtherThanNeeded) {
  const std::string script =
      "mkfifo \"$2\" && exec 3<> \"$2\" && printf '[1]\\n[' >&3 && "
      "\"$0\" print --all --to json - < \"$2\" 3>&- | { read -r line; echo \"$line\"; kill $$; }";
  const Folder folder;
  const Outcome outcome = RunPosutil({"x", folder.Path("pipe")}, "",
                                     {.fPrefix = {"timeout", "20", "sh", "-c", script}});
  EXPECT_EQ(outcome.fOut, "[1]\n");
}

}  // namespace
