// SPDX-License-Identifier: MIT
// Commands that change a document: set, remove, merge and patch.

#include <sys/stat.h>
#include <unistd.h>

#include "Folder.h"
#include "Posutil.h"

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;
using Names = std::set<std::string>;

Outcome Change(const std::string& command, const std::string& format, const std::string& document,
               const Arguments& arguments) {
  Arguments all = {command, "--from", format, "-"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return RunPosutil(all, document);
}

TEST(SetTest, Places) {
  const std::string no = "posutil: <stdin>: no place for a value at ";
  const struct {
    const char* why;
    std::string document;
    std::string path;
    Outcome outcome;
  } rows[] = {
      {"a member", R"({"a":1})", "a", {0, R"({"a":9})", ""}},
      {"a new member", R"({"a":1})", "b", {0, R"({"a":1,"b":9})", ""}},
      {"containers on the way",
       R"({"a":1})",
       "b.c[0].d",
       {0, R"({"a":1,"b":{"c":[{"d":9}]}})", ""}},
      {"the same with a pointer",
       R"({"a":1})",
       "/b/c/-/d",
       {0, R"({"a":1,"b":{"c":[{"d":9}]}})", ""}},
      {"a slot", "[1,2]", "[0]", {0, "[9,2]", ""}},
      {"an empty slot", "[null,2]", "/0", {0, "[9,2]", ""}},
      {"the end of an array", "[1,2]", "[2]", {0, "[1,2,9]", ""}},
      {"the end of an array, as a pointer", "[1,2]", "/-", {0, "[1,2,9]", ""}},
      {"past the end", "[1,2]", "[3]", {1, "", no + "\"[3]\": the document is an array of 2\n"}},
      {"through a scalar",
       R"({"a":{"b":1}})",
       "a.b.c",
       {1, "", no + "\"a.b.c\": \"a.b\" is a number\n"}},
      {"a key in an array",
       R"({"a":[1]})",
       "/a/x",
       {1, "", no + "\"/a/x\": \"a\" is an array of 1\n"}},
      {"an index in a dictionary",
       R"({"a":{"b":1}})",
       "a[0]",
       {1, "", no + "\"a[0]\": \"a\" is a dictionary\n"}},
      {"the empty key", R"({"a":1})", "", {0, R"({"":9,"a":1})", ""}},
      {"the whole document", "[1]", "", {0, "9", ""}},
      {"malformed", R"({"a":[1]})", "a[x]", {2, "", "posutil: malformed path \"a[x]\"\n"}},
      {"an index of more than 32 bits",
       "[1]",
       "[4294967296]",
       {1, "", no + "\"[4294967296]\": the document is an array of 1\n"}},
      {"an index in nothing", "{}", "/x/5", {1, "", no + "\"/x/5\": there is no \"x\"\n"}},
      {"a leading zero",
       "[1]",
       "/01",
       {1, "", no + "\"/01\": the document is an array of 1, and \"01\" is not an index\n"}},
      {"not a number", "[1]", "/-1x", {1, "", no + "\"/-1x\": the document is an array of 1\n"}},
      {"a sign",
       R"({"a":[1]})",
       "/a/-1",
       {1, "", no + "\"/a/-1\": \"a\" is an array of 1, and \"-1\" is not an index\n"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    Outcome expected = row.outcome;
    if (expected.fStatus == 0) expected.fOut += '\n';
    EXPECT_EQ(Change("set", "json", row.document, {row.path, "9"}), expected);
  }
}

TEST(SetTest, Values) {
  const std::string hint =
      "VALUE is JSON; use --string, --unicode, --number or --text for another form.\n";
  const struct {
    const char* why;
    Arguments value;
    Outcome outcome;
  } rows[] = {
      {"JSON", {R"({"a":[1,{"$unicode":"x"}]})"}, {0, "< a < a [1 `0078`] > >\n", ""}},
      {"a negative number", {"-5"}, {0, "< a -5 >\n", ""}},
      {"a string as it is", {"--string", "true"}, {0, "< a true >\n", ""}},
      {"one that looks like an option", {"--string", "-.5"}, {0, "< a (-.5) >\n", ""}},
      {"a Unicode string", {"--unicode", "\u00E9"}, {0, "< a `00E9` >\n", ""}},
      {"a number", {"--number", "1e3"}, {0, "< a 1000 >\n", ""}},
      {"text notation", {"--text", "< b [1 (c d)] >"}, {0, "< a < b [1 (c d)] > >\n", ""}},
      {"not JSON",
       {"Ada"},
       {2, "", "<VALUE>:1:1: unexpected 'Ada'; expected a value\n  Ada\n  ^\n" + hint}},
      {"JSON that no object holds",
       {"1e400"},
       {2, "", "<VALUE>:1:1: the number 1e400 is too large; --loss=keep keeps it\n  1e400\n  ^\n"}},
      {"a string that looks like an option",
       {"--string", "--", "--in-place=.old"},
       {0, "< a (--in-place=.old) >\n", ""}},
      {"a word as a number", {"--number", "x"}, {2, "", "posutil: VALUE is not a number: x\n"}},
      {"infinity", {"--number", "inf"}, {2, "", "posutil: VALUE is not a number: inf\n"}},
      {"not a number", {"--number", "1x"}, {2, "", "posutil: VALUE is not a number: 1x\n"}},
      {"not text notation",
       {"--text", "< b >"},
       {2, "", "<VALUE>:1:5: unexpected '>'; expected a value for \"b\"\n  < b >\n      ^\n"}},
      {"not UTF-8", {"--unicode", "\xFF"}, {2, "", "posutil: VALUE is not UTF-8\n"}},
      {"a loss",
       {"[true,null]", "--loss=error"},
       {3, "",
        "<VALUE>:1:2: true is read as the string \"true\"\n"
        "Use --loss=warn to accept this, --loss=keep to keep the values.\n"}},
      {"null is a loss in a dictionary",
       {"null"},
       {0, "< >\n", "<VALUE>:1:1: warning: a member with the value null is dropped\n"}},
      {"also inside",
       {R"([{"x":null}])"},
       {0, "< a [< >] >\n", "<VALUE>:1:7: warning: a member with the value null is dropped\n"}},
      {"kept", {"null", "--loss=keep"}, {0, "< a < ($json) null > >\n", ""}},
      {"what the format cannot hold",
       {R"({"$binary":"t","base64":""})"},
       {3, "", "posutil: <stdin>: a: text notation cannot hold binary data\n"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    Arguments arguments = {"a"};
    arguments.insert(arguments.end(), row.value.begin(), row.value.end());
    EXPECT_EQ(Change("set", "text", "< a 1 >", arguments), row.outcome);
  }
  EXPECT_EQ(Change("set", "text", "< >", {"a", "--string", "--number", "1"}).fStatus, 2);
  EXPECT_EQ(Change("set", "json", "[1,2]", {"[0]", "null"}), (Outcome{0, "[null,2]\n", ""}));
  EXPECT_EQ(Change("set", "json", "[1,2]", {"[2]", "null"}), (Outcome{0, "[1,2,null]\n", ""}));
}

// A kept value has no members, and an escaped object has those that JSON shows.
TEST(ChangeTest, KeptValuesAreScalars) {
  const std::string no = "posutil: <stdin>: no ";
  const struct {
    const char* command;
    std::string document;
    Arguments arguments;
    Outcome outcome;
  } rows[] = {
      {"set",
       R"({"a":true})",
       {"a.b", "1"},
       {1, "", no + "place for a value at \"a.b\": \"a\" is true\n"}},
      {"set",
       "null",
       {"a", "1"},
       {1, "", no + "place for a value at \"a\": the document is null\n"}},
      {"remove", R"({"a":true})", {"/a/$json"}, {1, "", no + "value at \"/a/$json\"\n"}},
      {"get", R"({"a":{"$json":"true"}})", {"a.$json"}, {0, "true\n", ""}},
      {"set",
       R"({"a":{"$json":"true"}})",
       {"/a/x", "1"},
       {0, R"({"a":{"$json":"true","x":1}})", ""}},
      {"set",
       R"({"a":{}})",
       {"/a/$json/$json", "\"1\""},
       {0, R"({"a":{"$json":{"$json":"1"}}})", ""}},
      {"set", R"({"a":{}})", {"/a/$json", "\"x\""}, {0, R"({"a":{"$json":"x"}})", ""}},
      {"set",
       R"({"$json":{"$json":"1"}})",
       {"$json.b", "2"},
       {0, R"({"$json":{"$json":"1","b":2}})", ""}},
      {"set", R"({"$json":"1"})", {"$json", "true"}, {0, R"({"$json":true})", ""}},
      {"remove", R"([{"$json":"null","b":2}])", {"/0/b"}, {0, R"([{"$json":"null"}])", ""}},
      {"remove", R"({"a":{"$json":"null"}})", {"/a/$json"}, {0, R"({"a":{}})", ""}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.document + row.arguments[0]);
    Arguments arguments = row.arguments;
    arguments.push_back("--loss=keep");
    Outcome expected = row.outcome;
    if (expected.fStatus == 0 && expected.fOut.back() != '\n') expected.fOut += '\n';
    EXPECT_EQ(Change(row.command, "json", row.document, arguments), expected);
  }
}

TEST(RemoveTest, Values) {
  const std::string none = "posutil: <stdin>: no value at ";
  const struct {
    const char* why;
    std::string document;
    Arguments paths;
    Outcome outcome;
  } rows[] = {
      {"members", R"({"a":1,"b":{"c":2,"d":3}})", {"b.c", "a"}, {0, "{\"b\":{\"d\":3}}\n", ""}},
      {"slots of the document as it was", "[0,1,2,3]", {"[0]", "[2]", "/1"}, {0, "[3]\n", ""}},
      {"an empty slot", "[0,null,2]", {"/1"}, {0, "[0,2]\n", ""}},
      {"a value twice, and one inside", R"([0,{"a":1}])", {"[1]", "/1/a", "/1"}, {0, "[0]\n", ""}},
      {"by number, not by text",
       "[0,1,2,3,4,5,6,7,8,9,10]",
       {"[10]", "[9]", "[2]"},
       {0, "[0,1,3,4,5,6,7,8]\n", ""}},
      {"every path that is missing",
       R"({"a":[1]})",
       {"b", "a[0]", "/a/-", "a.x.y"},
       {1, "", none + "\"b\"\n" + none + "\"/a/-\"\n" + none + "\"a.x.y\"\n"}},
      {"an index of more than 32 bits",
       "[1]",
       {"[4294967296]"},
       {1, "", none + "\"[4294967296]\"\n"}},
      {"malformed", "[1]", {"[0", "[9]"}, {2, "", "posutil: malformed path \"[0\"\n"}},
      {"the document", "[1]", {""}, {1, "", "posutil: <stdin>: nothing is left\n"}},

  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Change("remove", "json", row.document, row.paths), row.outcome);
  }
}

TEST(ChangeTest, KeepsFormatAndLayout) {
  const struct {
    const char* format;
    std::string document;
    std::string out;
  } rows[] = {
      {"json", R"({"b":[1],"a":2})", "{\"a\":9,\"b\":[1]}\n"},
      {"json", "{\n  \"b\": [1]}\n", "{\n  \"a\": 9,\n  \"b\": [\n    1\n  ]\n}\n"},
      {"json", "{\n\t\"b\": 1}\n", "{\n\t\"a\": 9,\n\t\"b\": 1\n}\n"},
      {"json", "\n\n{\n    \"b\": {}}", "{\n    \"a\": 9,\n    \"b\": {}\n}\n"},
      {"json", "{\n \t\"b\": 1}", "{\n  \"a\": 9,\n  \"b\": 1\n}\n"},
      {"json", "{\n\"b\": []}", "{\n\"a\": 9,\n\"b\": []\n}\n"},
      {"json", "{}", "{\"a\":9}\n"},
      {"json", "{\n}", "{\n  \"a\": 9\n}\n"},
      {"text", "< b 1 >\n", "< a 9 b 1 >\n"},
      {"text", "< b 1\n  c 2 >\n", "<\n  a 9\n  b 1\n  c 2\n>\n"},
      {"typea", "POSStreamerTypeA_Version1.0 < \"b\" \"\\377\" > ",
       "POSStreamerTypeA_Version1.0 <\n\t\"a\" #9 \n\t\"b\" \"\\377\"\n>"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.document);
    Outcome outcome = Change("set", row.format, row.document, {"a", "9"});
    if (std::string(row.format) == "typea") {  // the library's own layout
      EXPECT_EQ(outcome.fStatus, 0);
      EXPECT_EQ(Change("get", "typea", outcome.fOut, {"--to", "text", "."}).fStatus, 1);
      EXPECT_EQ(Change("get", "typea", outcome.fOut, {"a", "b"}), (Outcome{0, "9\n\xFF\n", ""}));
    } else {
      EXPECT_EQ(outcome, (Outcome{0, row.out, ""}));
    }
  }
}

TEST(ChangeTest, ManyDocuments) {
  EXPECT_EQ(Change("set", "json", "{\"a\":1}\n[2]{}", {"--all", "/0", "9"}),
            (Outcome{0, "{\"0\":9,\"a\":1}\n[9]\n{\"0\":9}\n", ""}));
  EXPECT_EQ(Change("set", "json", "[1]", {"--indent=1", "[1]", "2"}),
            (Outcome{0, "[\n 1,\n 2\n]\n", ""}));
  EXPECT_EQ(Change("set", "json", "[\n]", {"[0]", "1"}), (Outcome{0, "[\n  1\n]\n", ""}));
  EXPECT_EQ(Change("set", "json", "[\n1]", {"--compact", "[1]", "2"}), (Outcome{0, "[1,2]\n", ""}));
  // The value is not shared.
  const Folder folder;
  const std::string patch = folder.Put(
      "p.json", R"([{"op":"add","path":"/x","value":[1]},{"op":"add","path":"/x/-","value":2}])");
  EXPECT_EQ(Change("patch", "json", "{}\n{}", {"--all", patch}),
            (Outcome{0, "{\"x\":[1,2]}\n{\"x\":[1,2]}\n", ""}));
  EXPECT_EQ(Change("remove", "json", "{\"a\":1,\"b\":2}\n{\"b\":1}", {"--all", "a"}).fErr,
            "posutil: <stdin>, document 2: no value at \"a\"\n");
  EXPECT_EQ(
      Change("set", "json", "{}\n{}", {"--all", "a", "null"}),
      (Outcome{0, "{}\n{}\n", "<VALUE>:1:1: warning: a member with the value null is dropped\n"}));
}

// Of a document, a patch and the result. The examples of RFC 7396, appendix A.
TEST(MergeTest, TheExamplesOfTheRfc) {
  const struct {
    const char* document;
    const char* patch;
    const char* result;
  } rows[] = {
      {R"({"a":"b"})", R"({"a":"c"})", R"({"a":"c"})"},
      {R"({"a":"b"})", R"({"b":"c"})", R"({"a":"b","b":"c"})"},
      {R"({"a":"b"})", R"({"a":null})", R"({})"},
      {R"({"a":"b","b":"c"})", R"({"a":null})", R"({"b":"c"})"},
      {R"({"a":["b"]})", R"({"a":"c"})", R"({"a":"c"})"},
      {R"({"a":"c"})", R"({"a":["b"]})", R"({"a":["b"]})"},
      {R"({"a":{"b":"c"}})", R"({"a":{"b":"d","c":null}})", R"({"a":{"b":"d"}})"},
      {R"({"a":[{"b":"c"}]})", R"({"a":[1]})", R"({"a":[1]})"},
      {R"(["a","b"])", R"(["c","d"])", R"(["c","d"])"},
      {R"({"a":"b"})", R"(["c"])", R"(["c"])"},
      {R"({"a":"foo"})", R"("bar")", R"("bar")"},
      {R"([1,2])", R"({"a":"b","c":null})", R"({"a":"b"})"},
      {R"({})", R"({"a":{"bb":{"ccc":null}}})", R"({"a":{"bb":{}}})"},
      // With nulls in the document, which only --loss=keep has.
      {R"({"e":null})", R"({"a":1})", R"({"a":1,"e":null})"},
      {R"({"a":true})", R"({"a":{"b":false}})", R"({"a":{"b":false}})"},
      {R"({"a":"foo"})", "null", "null"},
      // Objects that look like kept values.
      {R"({"a":1})", R"({"a":{"$json":"null"}})", R"({"a":{"$json":"null"}})"},
      {R"({"a":{"$json":"1"}})", R"({"a":{"b":2}})", R"({"a":{"$json":"1","b":2}})"},
      {R"({"$json":"1","b":2})", R"({"b":null})", R"({"$json":"1"})"},
  };
  const Folder folder;
  int number = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.patch);
    const std::string patch = folder.Put("patch", row.patch);
    EXPECT_EQ(Change("merge", "json", row.document,
                     {"--loss=keep", "--all", "--patch-from", "json", patch}),
              (Outcome{0, std::string(row.result) + "\n", ""}));
    if (++number > 13) continue;
    EXPECT_EQ(Change("merge", "json", row.document, {"--all", "--patch-from", "json", patch}),
              (Outcome{0, std::string(row.result) + "\n", ""}));
  }
}

TEST(MergeTest, NullsAndFormats) {
  const Folder folder;
  const std::string nulls = folder.Put("p.json", R"({"a":[null,{"x":null}],"b":null})");
  EXPECT_EQ(Change("merge", "json", R"({"b":1})", {nulls}),
            (Outcome{0, "{\"a\":[null,{}]}\n",
                     nulls + ":1:17: warning: a member with the value null is dropped\n"}));
  EXPECT_EQ(Change("merge", "json", R"({"b":1})", {"--loss=error", nulls}).fStatus, 3);
  EXPECT_EQ(Change("merge", "text", "< a `0041` b < c (\xFF) d 1 > >",
                   {folder.Put("p.txt", "< b < d 2 e `0042` > >")}),
            (Outcome{0, "< a `0041` b < c (\xFF) d 2 e `0042` > >\n", ""}));
  EXPECT_EQ(RunPosutil({"merge", "-", "-"}).fStatus, 2);
  EXPECT_EQ(Change("merge", "json", "{}", {folder.Put("null.json", "null")}),
            (Outcome{3, "", "posutil: <stdin>: the result is null; --loss=keep keeps it\n"}));
}

// The examples of RFC 6902, appendix A, and of RFC 6901; an empty result is a failure.
TEST(PatchTest, TheExamplesOfTheRfc) {
  const char* const pointers = R"({"foo":["bar","baz"],"":0,"a/b":1,"c%d":2,"e^f":3,"g|h":4,)"
                               R"("i\\j":5,"k\"l":6," ":7,"m~n":8})";
  const struct {
    const char* document;
    const char* patch;
    const char* result;
  } rows[] = {
      {R"({"foo":"bar"})", R"([{"op":"add","path":"/baz","value":"qux"}])",
       R"({"baz":"qux","foo":"bar"})"},
      {R"({"foo":["bar","baz"]})", R"([{"op":"add","path":"/foo/1","value":"qux"}])",
       R"({"foo":["bar","qux","baz"]})"},
      {R"({"baz":"qux","foo":"bar"})", R"([{"op":"remove","path":"/baz"}])", R"({"foo":"bar"})"},
      {R"({"foo":["bar","qux","baz"]})", R"([{"op":"remove","path":"/foo/1"}])",
       R"({"foo":["bar","baz"]})"},
      {R"({"baz":"qux","foo":"bar"})", R"([{"op":"replace","path":"/baz","value":"boo"}])",
       R"({"baz":"boo","foo":"bar"})"},
      {R"({"foo":{"bar":"baz","waldo":"fred"},"qux":{"corge":"grault"}})",
       R"([{"op":"move","from":"/foo/waldo","path":"/qux/thud"}])",
       R"({"foo":{"bar":"baz"},"qux":{"corge":"grault","thud":"fred"}})"},
      {R"({"foo":["all","grass","cows","eat"]})",
       R"([{"op":"move","from":"/foo/1","path":"/foo/3"}])",
       R"({"foo":["all","cows","eat","grass"]})"},
      {R"({"baz":"qux","foo":["a",2,"c"]})",
       R"([{"op":"test","path":"/baz","value":"qux"},{"op":"test","path":"/foo/1","value":2}])",
       R"({"baz":"qux","foo":["a",2,"c"]})"},
      {R"({"baz":"qux"})", R"([{"op":"test","path":"/baz","value":"bar"}])", ""},
      {R"({"foo":"bar"})", R"([{"op":"add","path":"/child","value":{"grandchild":{}}}])",
       R"({"child":{"grandchild":{}},"foo":"bar"})"},
      {R"({"foo":"bar"})", R"([{"op":"add","path":"/baz","value":"qux","xyz":123}])",
       R"({"baz":"qux","foo":"bar"})"},
      {R"({"foo":"bar"})", R"([{"op":"add","path":"/baz/bat","value":"qux"}])", ""},
      {R"({"/":9,"~1":10})", R"([{"op":"test","path":"/~01","value":10}])", R"({"/":9,"~1":10})"},
      {R"({"/":9,"~1":10})", R"([{"op":"test","path":"/~01","value":"10"}])", ""},
      {R"({"foo":["bar"]})", R"([{"op":"add","path":"/foo/-","value":["abc","def"]}])",
       R"({"foo":["bar",["abc","def"]]})"},
      {pointers,
       R"([{"op":"test","path":"/foo","value":["bar","baz"]},
           {"op":"test","path":"/foo/0","value":"bar"},{"op":"test","path":"/","value":0},
           {"op":"test","path":"/a~1b","value":1},{"op":"test","path":"/c%d","value":2},
           {"op":"test","path":"/e^f","value":3},{"op":"test","path":"/g|h","value":4},
           {"op":"test","path":"/i\\j","value":5},{"op":"test","path":"/k\"l","value":6},
           {"op":"test","path":"/ ","value":7},{"op":"test","path":"/m~0n","value":8},
           {"op":"replace","path":"","value":1}])",
       "1"},
      // More than the examples.
      {"[1]", R"([{"op":"add","path":"","value":{"a":[]}},{"op":"add","path":"/a/0","value":2}])",
       R"({"a":[2]})"},
      {R"({"a":[1,{"b":2}]})",
       R"([{"op":"copy","from":"/a","path":"/c"},{"op":"add","path":"/c/1/d","value":3}])",
       R"({"a":[1,{"b":2}],"c":[1,{"b":2,"d":3}]})"},
      {R"({"a":{"b":1}})", R"([{"op":"move","from":"/a","path":"/a/b"}])", ""},
      {R"({"a":1})", R"([{"op":"move","from":"/a","path":"/a"}])", R"({"a":1})"},
      {"[1,2]", R"([{"op":"add","path":"/3","value":3}])", ""},
      {"[1,2]", R"([{"op":"add","path":"/01","value":3}])", ""},
      {"[1,2]", R"([{"op":"replace","path":"/2","value":3}])", ""},
      {"[1]", R"([{"op":"add","path":"/0","value":0},{"op":"add","path":"/2/x","value":1}])", ""},
      {"[null,1,2]", R"([{"op":"move","from":"/0","path":"/2"}])", "[1,2,null]"},
      {"[1,2]", R"([{"op":"remove","path":"/-"}])", ""},
      {R"({"a":{"b":1}})", R"([{"op":"test","path":"/a","value":{"b":1,"c":2}}])", ""},
      {R"({"a":{"b":1,"c":2}})", R"([{"op":"test","path":"/a","value":{"b":1}}])", ""},
      {R"({"a":"1"})", R"([{"op":"test","path":"/a","value":{"$unicode":"1"}}])", ""},
      {"[1]", R"([{"op":"test","path":"/0","value":1.0}])", "[1]"},
      {"[1]", R"([{"op":"add","path":"/0","value":null},{"op":"add","path":"/2","value":null}])",
       "[null,1,null]"},
      {"[null,1]", R"([{"op":"test","path":"/0","value":null}])", "[null,1]"},
      {"[[null,{}]]", R"([{"op":"test","path":"/0","value":[null,{}]}])", "[[null,{}]]"},
      // Inserts into an array and into one inside of it, then reads of what is around them.
      {R"({"a":[1,[2]]})",
       R"([{"op":"add","path":"/a/0","value":0},{"op":"add","path":"/a/2/0","value":9},
           {"op":"add","path":"/a/3","value":null},{"op":"remove","path":"/a/0"},
           {"op":"move","from":"/a/0","path":"/a/2"},{"op":"replace","path":"/a/0/1","value":5},
           {"op":"copy","from":"/a","path":"/b"},{"op":"add","path":"/a/0","value":7},
           {"op":"replace","path":"/a/1","value":6},
           {"op":"test","path":"","value":{"a":[7,6,null,1],"b":[[9,5],null,1]}}])",
       R"({"a":[7,6,null,1],"b":[[9,5],null,1]})"},
  };
  const Folder folder;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.patch);
    const std::string patch = folder.Put("p.json", row.patch);
    for (const char* const loss : {"--loss=warn", "--loss=keep"}) {
      SCOPED_TRACE(loss);
      const Outcome outcome = Change("patch", "json", row.document, {"--all", loss, patch});
      if (*row.result) {
        EXPECT_EQ(outcome, (Outcome{0, std::string(row.result) + "\n", ""}));
      } else {
        EXPECT_EQ(outcome.fStatus, 1);
        EXPECT_EQ(outcome.fOut, "");
      }
    }
  }
}

// The library's own copy would use up the stack.
TEST(PatchTest, CopiesWhatNestsDeep) {
  const Folder folder;
  const std::string patch = folder.Put(
      "p.json", R"([{"op":"copy","from":"/a","path":"/b"},{"op":"add","path":"/b/0","value":1}])");
  const std::string inner = std::string(200'000, '[') + std::string(200'000, ']');
  EXPECT_TRUE(Change("patch", "json", "{\"a\":[" + inner + "]}", {"--compact", patch}) ==
              (Outcome{0, "{\"a\":[" + inner + "],\"b\":[1," + inner + "]}\n", ""}));
}

TEST(PatchTest, InsertsIntoALongArrayTakeLittleTime) {
  std::string array = "[0";
  for (int i = 1; i < 20000; ++i) array += ",0";
  std::string patch = R"([{"op":"add","path":"/0","value":1})";
  for (int i = 1; i < 4000; ++i) patch += R"(,{"op":"add","path":"/0","value":1})";
  const Folder folder;
  const Outcome outcome = RunPosutil({"patch", "--compact", folder.Put("a.json", array + "]"),
                                      folder.Put("patch.json", patch + "]")},
                                     "", {.fPrefix = WithinSeconds(10)});
  EXPECT_EQ(outcome.fStatus, 0);
  EXPECT_EQ(outcome.fOut.size(), 2 * 24000 + 2);
}

TEST(PatchTest, Messages) {
  const Folder folder;
  const struct {
    const char* patch;
    int column;  // of the fault in the patch; 0 if the document does not fit
    std::string message;
  } rows[] = {
      {"{}", 1, "the patch is not an array of operations"},
      {"[1]", 2, "operation 1 of the patch is not a dictionary"},
      {R"([{"path":"/a"}])", 2, R"(operation 1 of the patch has no string "op")"},
      {R"([{"op":"remove"}])", 2, R"(operation 1 of the patch has no string "path")"},
      {R"([{"op":"add","path":"/a"}])", 2, R"(operation 1 of the patch has no "value")"},
      {R"([{"op":"drop","path":"/a"}])", 8,
       R"(operation 1 of the patch has the unknown op "drop")"},
      {R"([{"op":"remove","path":"a"}])", 24,
       R"(operation 1 of the patch has the malformed path "a")"},
      {R"([{"op":"copy","path":"/b","from":"/~"}])", 34,
       R"(operation 1 of the patch has the malformed path "/~")"},
      {R"([{"op":"test","path":"/a","value":1},{"op":"remove","path":"/b/c"}])", 0,
       R"(operation 2 of the patch (remove "/b/c"): there is no "b")"},
      {R"([{"op":"remove","path":"/b"}])", 0,
       R"(operation 1 of the patch (remove "/b"): there is no "/b")"},
      {R"([{"op":"test","path":"/a","value":2}])", 0,
       R"(operation 1 of the patch (test "/a"): the value is different)"},
  };
  for (const auto& row : rows) {
    const std::string patch = folder.Put("p.json", row.patch);
    const Outcome outcome = Change("patch", "json", R"({"a":1})", {patch});
    EXPECT_EQ(outcome.fStatus, row.column == 0 ? 1 : 3);
    EXPECT_EQ(FirstMessage(outcome),
              (row.column == 0 ? "posutil: <stdin>: "
                               : patch + ":1:" + std::to_string(row.column) + ": ") +
                  row.message);
  }
}

// Also of a slot of the document itself.
TEST(PatchTest, NullsThatBecomeMembers) {
  const Folder folder;
  const struct {
    const char* patch;
    int column;
    const char* out;
  } rows[] = {
      {R"([{"op":"add","path":"/b","value":null}])", 34, "{\"a\":[null]}\n"},
      {R"([{"op":"copy","from":"/a/0","path":"/b"}])", 36, "{\"a\":[null]}\n"},
      {R"([{"op":"move","from":"/a/0","path":"/b"}])", 36, "{\"a\":[]}\n"},
  };
  for (const auto& row : rows) {
    const std::string patch = folder.Put("p.json", row.patch);
    const std::string place = patch + ":1:" + std::to_string(row.column) + ": ";
    const std::string loss = "a member with the value null is dropped";
    EXPECT_EQ(Change("patch", "json", R"({"a":[null],"b":1})", {patch}),
              (Outcome{0, row.out, place + "warning: " + loss + "\n"}));
    EXPECT_EQ(Change("patch", "json", R"({"a":[null],"b":1})", {"--loss=error", patch}).fStatus, 3);
  }
}

TEST(InPlaceTest, ReplacesTheFile) {
  const Folder folder;
  const std::string file = folder.Put("a.json", "{\"a\":1}");
  EXPECT_EQ(RunPosutil({"set", "--in-place", file, "a", "2"}), (Outcome{0, "", ""}));
  EXPECT_EQ(folder.Content("a.json"), "{\"a\":2}\n");
  EXPECT_EQ(folder.Names(), (Names{"a.json"}));

  fs::permissions(file, fs::perms(0600));
  const std::string patch = folder.Put("p.json", "{\"b\":3}");
  EXPECT_EQ(RunPosutil({"merge", file, patch, "--in-place=.old"}), (Outcome{0, "", ""}));
  EXPECT_EQ(folder.Content("a.json"), "{\"a\":2,\"b\":3}\n");
  EXPECT_EQ(folder.Content("a.json.old"), "{\"a\":2}\n");
  EXPECT_EQ(fs::status(file + ".old").permissions(), fs::perms(0600));
  // An older copy is replaced, also if it is the file itself.
  EXPECT_EQ(RunPosutil({"remove", "--in-place=.old", file, "a"}), (Outcome{0, "", ""}));
  EXPECT_EQ(folder.Content("a.json.old"), "{\"a\":2,\"b\":3}\n");
  // Any suffix is one, also what could be the value of an option.
  for (const char* const suffix : {"true", "false", "{}"}) {
    const std::string option = std::string("--in-place=") + suffix;
    EXPECT_EQ(RunPosutil({"set", option, file, "c", "1"}), (Outcome{0, "", ""}));
    EXPECT_TRUE(fs::remove(file + suffix));
    EXPECT_EQ(RunPosutil({"remove", "--in-place", file, "c"}), (Outcome{0, "", ""}));
  }
  fs::create_hard_link(file, file + ".bak");
  EXPECT_EQ(RunPosutil({"remove", "--in-place=.bak", file, "b"}), (Outcome{0, "", ""}));
  EXPECT_EQ(folder.Content("a.json.bak"), "{\"b\":3}\n");
  EXPECT_EQ(folder.Names(), (Names{"a.json", "a.json.bak", "a.json.old", "p.json"}));
}

TEST(InPlaceTest, FollowsLinks) {
  const Folder folder;
  folder.Put("a.json", "[1]");
  const std::string link = folder.Path("link.json");
  fs::create_symlink("a.json", link);
  EXPECT_EQ(RunPosutil({"set", "--in-place=~", link, "[0]", "2"}), (Outcome{0, "", ""}));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(folder.Content("a.json"), "[2]\n");
  EXPECT_EQ(folder.Content("a.json~"), "[1]");
}

TEST(InPlaceTest, AFailureLeavesEverything) {
  const Folder folder;
  const std::string json = folder.Put("a.json", "{\"a\":true}");
  const std::string text = folder.Put("b.txt", "< a 1 >");
  const std::string bad = folder.Put(
      "p.json", R"([{"op":"replace","path":"/a","value":2},{"op":"remove","path":"/x"}])");
  fs::create_directory(folder.Path("b.txt.dir"));
  const Names before = folder.Names();
  const struct {
    const char* why;
    Arguments arguments;
    int status;
  } rows[] = {
      {"a loss", {"set", "--in-place=.old", json, "b", "1"}, 3},
      {"a path that is missing", {"remove", "--in-place=.old", text, "b"}, 1},
      {"an operation that fails", {"patch", "--in-place=.old", text, bad}, 1},
      {"a value that the format cannot hold", {"set", "--in-place=.old", text, "a", "[null]"}, 3},
      {"a value that is not JSON", {"set", "--in-place=.old", text, "a", "x"}, 2},
      {"a suffix that leads elsewhere", {"set", "--in-place=/x", text, "a", "2"}, 2},
      {"an empty suffix", {"set", "--in-place=", text, "a", "2"}, 2},
      {"a suffix that is taken by a folder", {"set", "--in-place=.dir", text, "a", "2"}, 3},
      {"standard input", {"set", "--in-place", "--from", "json", "-", "a", "2"}, 2},
      {"a device", {"set", "--in-place", "--from", "text", "/dev/null", "a", "2"}, 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const Outcome outcome = RunPosutil(row.arguments, "{}");
    EXPECT_EQ(outcome.fStatus, row.status);
    EXPECT_NE(outcome.fErr, "");
    EXPECT_EQ(folder.Names(), before);
    EXPECT_EQ(folder.Content("a.json") + folder.Content("b.txt"), "{\"a\":true}< a 1 >");
  }
  EXPECT_EQ(RunPosutil({"set", "--in-place", "--loss=keep", json, "b", "false"}),
            (Outcome{0, "", ""}));
  EXPECT_EQ(folder.Content("a.json"), "{\"a\":true,\"b\":false}\n");
}

TEST(InPlaceTest, AFolderThatCannotBeWritten) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root, to become another user";
  const Folder folder;
  const std::string file = folder.Put("a.json", "[1]");
  fs::permissions(file, fs::perms(0666));
  fs::permissions(folder.Path(""), fs::perms(0755));
  EXPECT_EQ(RunPosutil({"set", "--in-place", file, "[0]", "2"}, "", {.fPrefix = AsAnotherUser()}),
            (Outcome{3, "", "posutil: " + file + ": Permission denied\n"}));
  EXPECT_EQ(folder.Content("a.json"), "[1]");
}

}  // namespace
