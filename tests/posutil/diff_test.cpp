// SPDX-License-Identifier: MIT
// Differences between documents.

#include <random>

#include "Folder.h"
#include "Posutil.h"

namespace {

class DiffTest : public testing::Test {
 protected:
  Outcome Diff(const std::string& a, const std::string& b,
               const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"diff", fFolder.Put("a", a), fFolder.Put("b", b)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunPosutil(arguments);
  }
  Outcome Patch(const std::string& document, const std::string& patch) const {
    return RunPosutil(
        {"patch", "--loss=keep", fFolder.Put("a", document), fFolder.Put("patch.json", patch)});
  }

  const Folder fFolder;
};

TEST_F(DiffTest, Lines) {
  const struct {
    const char* why;
    std::string a;
    std::string b;
    std::string out;
  } rows[] = {
      {"the same in another format", R"({"b":[1,2.50],"a":"x"})", "< a x b [1 2.5] >", ""},
      {"the same in another order", R"({"a":1,"b":2})", R"({"b":2,"a":1.0})", ""},
      {"zeros", "[0]", "[-0.0]", ""},
      {"a value", R"({"a":{"b":1}})", R"({"a":{"b":2}})", "- a.b = 1\n+ a.b = 2\n"},
      {"members", R"({"a":1,"b":{"x":[1]}})", R"({"c":[],"a":1})", "- b.x[0] = 1\n+ c = []\n"},
      {"a key with a point", R"({"a.b":1})", "{}", "- /a.b = 1\n"},
      {"kinds", R"({"a":"1","b":{"$unicode":"x"},"c":[1]})", R"({"a":1,"b":"x","c":{"0":1}})",
       "- a = \"1\"\n+ a = 1\n- b = {\"$unicode\":\"x\"}\n+ b = \"x\"\n- c[0] = 1\n+ c.0 = 1\n"},
      {"binary data that begins alike", R"({"$binary":"t","base64":"AAAA"})",
       R"({"$binary":"t","base64":"AAAB"})",
       "-  = {\"$binary\":\"t\",\"base64\":\"AAAA\"}\n"
       "+  = {\"$binary\":\"t\",\"base64\":\"AAAB\"}\n"},
      {"an insertion shows as one", "[1,2,3]", "[0,1,2,3]", "+ [0] = 0\n"},
      {"a removal in the middle", "[1,2,3,4]", "[1,4]", "- [1] = 2\n- [2] = 3\n"},
      {"empty slots", "[1,null,[]]", "[1,[],[]]", "- [1] = null\n+ [1] = []\n"},
      {"a change in one of many", R"([{"a":1},{"a":2,"b":3},{"a":4}])",
       R"([{"a":1},{"a":5,"b":3},{"a":4}])", "- [1].a = 2\n+ [1].a = 5\n"},
      {"whole documents", "[1]", R"({"a":1})", "- [0] = 1\n+ a = 1\n"},
      {"truth is not its word", R"({"a":true,"b":null})", R"({"a":"true"})",
       "- a = true\n+ a = \"true\"\n- b = null\n"},
      {"an object that looks like a kept value", R"({"a":{"$json":"true"},"b":{"$json":"1"}})",
       R"({"a":{"$json":"false"},"b":{"$json":"1","c":2}})",
       "- a.$json = \"true\"\n+ a.$json = \"false\"\n+ b.c = 2\n"},
      {"one instead of a kept value", R"({"a":true})", R"({"a":{"$json":"true"}})",
       "- a = true\n+ a.$json = \"true\"\n"},
      {"integers that are one double", "[9007199254740993]", "[9007199254740992]",
       "- [0] = 9007199254740993\n+ [0] = 9007199254740992\n"},
      {"a prefix of a dictionary", R"({"a":{"b":1}})", R"({"a":{"b":1,"c":2}})", "+ a.c = 2\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Diff(row.a, row.b), (Outcome{row.out.empty() ? 0 : 1, row.out, ""}));
  }
}

TEST_F(DiffTest, PatchesAndTrouble) {
  EXPECT_EQ(Diff(R"({"a/b":[1,2,3],"c":1})", R"({"a/b":[1],"d":true})", {"--format", "json"}),
            (Outcome{1,
                     "[\n  {\"op\":\"remove\",\"path\":\"/a~1b/1\"},\n"
                     "  {\"op\":\"remove\",\"path\":\"/a~1b/1\"},\n"
                     "  {\"op\":\"remove\",\"path\":\"/c\"},\n"
                     "  {\"op\":\"add\",\"path\":\"/d\",\"value\":true}\n]\n",
                     ""}));
  EXPECT_EQ(Diff("[1]", "[1]", {"--format", "json"}), (Outcome{0, "[]\n", ""}));
  EXPECT_EQ(Diff("[1", "[1]").fStatus, 3);
  EXPECT_EQ(Diff("[true]", R"(["true"])", {"--loss=error"}).fStatus, 3);
  EXPECT_EQ(Diff("[true]", R"(["true"])", {"--loss=warn"}).fStatus, 0);
  EXPECT_EQ(Diff("[null,true]", "[1,2]", {"--loss=warn"}).fOut,
            "- [0] = null\n+ [0] = 1\n- [1] = \"true\"\n+ [1] = 2\n");
  EXPECT_EQ(Diff("[1]", "[null]", {"--loss=warn", "--format", "json"}),
            (Outcome{1, "[\n  {\"op\":\"replace\",\"path\":\"/0\",\"value\":null}\n]\n", ""}));
  EXPECT_EQ(RunPosutil({"diff", fFolder.Put("a", "[1]"), fFolder.Path("nowhere")}).fStatus, 3);
  EXPECT_EQ(RunPosutil({"diff", "-", "-"}).fStatus, 2);
  EXPECT_EQ(RunPosutil({"diff", fFolder.Put("a", "[1]"), "-"}, "[2]"),
            (Outcome{1, "- [0] = 1\n+ [0] = 2\n", ""}));
  EXPECT_EQ(RunPosutil({"diff", "-", fFolder.Put("a", "[1]")}, "[2]"),
            (Outcome{1, "- [0] = 2\n+ [0] = 1\n", ""}));
}

// A patch of what text notation has and JSON does not.
TEST_F(DiffTest, AValueThatAPatchCannotHold) {
  const Outcome outcome = Diff("< a 1 >", "< a (\xFF) >", {"--format", "json"});
  EXPECT_EQ(outcome.fStatus, 3);
  EXPECT_EQ(FirstMessage(outcome), "posutil: " + fFolder.Path("b") + ": a: invalid UTF-8");
}

std::string RandomJson(std::mt19937& random, int depth) {
  static const char* const kScalars[] = {"1",
                                         "2",
                                         "\"x\"",
                                         "null",
                                         "true",
                                         "{\"$unicode\":\"x\"}",
                                         "{\"$json\":\"true\"}",
                                         "{\"$json\":{\"$json\":\"1\"}}"};
  const auto kind = random() % 4;
  if (depth == 0 || kind < 2) return kScalars[random() % std::size(kScalars)];
  std::string json = kind == 2 ? "[" : "{";
  const auto count = random() % 4;
  char key = 'a';
  for (unsigned i = 0; i < count; ++i) {
    if (i > 0) json += ',';
    key = static_cast<char>(key + (random() % 2 == 0 ? 1 : 2));
    if (kind == 3) json += std::string("\"") + key + "\":";
    json += RandomJson(random, depth - 1);
  }
  return json + (kind == 2 ? "]" : "}");
}

TEST_F(DiffTest, PatchesTurnTheFirstIntoTheSecond) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (int i = 0; i < 40; ++i) {
    const std::string a = "[" + RandomJson(random, 4) + "]";
    const std::string b = "[" + RandomJson(random, 4) + "]";
    const Outcome diff = Diff(a, b, {"--format", "json"});
    const Outcome patched = Patch(a, diff.fOut);
    ASSERT_EQ(patched.fStatus, 0) << a << '\n' << b << '\n' << diff.fOut << patched.fErr;
    EXPECT_EQ(Diff(patched.fOut, b), (Outcome{0, "", ""})) << a << '\n' << b << '\n' << diff.fOut;
    EXPECT_EQ(diff.fStatus, diff.fOut == "[]\n" ? 0 : 1);
  }
}

TEST_F(DiffTest, DeepAndLongDocumentsTakeLinearTime) {
  constexpr std::size_t depth = 50000;
  const auto nested = [](const std::string& value) {
    std::string json;
    for (std::size_t i = 0; i < depth; ++i) json += "[1,";
    json += value;
    return json + std::string(depth, ']');
  };
  std::string numbers = "[0";
  for (int i = 1; i < 200000; ++i) numbers += "," + std::to_string(i);
  const std::pair<std::string, std::string> rows[] = {
      {nested("1"), nested("2")}, {numbers + "]", "[-1," + numbers.substr(1) + "]"}};
  for (const auto& [a, b] : rows) {
    const Outcome outcome = RunPosutil({"diff", fFolder.Put("a", a), fFolder.Put("b", b)}, "",
                                       {.fPrefix = WithinSeconds(20)});
    EXPECT_EQ(outcome.fStatus, 1);
    EXPECT_EQ(outcome.fErr, "");
  }
}

}  // namespace
