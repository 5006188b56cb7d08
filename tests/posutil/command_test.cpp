// SPDX-License-Identifier: MIT
// Commands, their arguments and exit statuses.

#include "Folder.h"
#include "KAPUtilsVersion.h"
#include "Posutil.h"

namespace {

const char kDocument[] =
    "< a < b [10 20 (x y)] > u `0041` w `00E920ACD83DDE00` (c d) 1.50 () < e [] > >";

TEST(GetTest, PrintsAValuePerLine) {
  const struct {
    const char* why;
    std::vector<std::string> paths;
    Outcome outcome;
  } rows[] = {
      {"scalars as they are",
       {"a.b[1]", ".a.b[2]", "u", "c d", "w"},
       {0, "20\nx y\nA\n1.5\né€😀\n", ""}},
      {"compound values as JSON",
       {"a", "a.b", ".", ".e"},
       {1, "{\"b\":[10,20,\"x y\"]}\n[10,20,\"x y\"]\n{\"e\":[]}\n",
        "posutil: <stdin>: no value at \".e\"\n"}},
      {"the empty key", {"[0]", "..e"}, {1, "[]\n", "posutil: <stdin>: no value at \".[0]\"\n"}},
      {"paths without a value",
       {"a.b[3]", "a.b[1]", "a.b.c", "{}"},
       {1, "20\n",
        "posutil: <stdin>: no value at \"a.b[3]\"\nposutil: <stdin>: no value at \"a.b.c\"\n"
        "posutil: <stdin>: no value at \"{}\"\n"}},
      {"a requested format",
       {"--to", "json", "a.b[2]", "u"},
       {0, "\"x y\"\n{\"$unicode\":\"A\"}\n", ""}},
      {"text on one line",
       {"--to", "text", "a", ".", "a.b[2]"},
       {0, "< b [10 20 (x y)] >\n< e [] >\n(x y)\n", ""}},
      {"a list is a path, not several paths",
       {"[0,1]", ".-x"},
       {1, "",
        "posutil: <stdin>: no value at \".[0,1]\"\nposutil: <stdin>: no value at \".-x\"\n"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    std::vector<std::string> arguments = {"get", "--from", "text", "-"};
    arguments.insert(arguments.end(), row.paths.begin(), row.paths.end());
    EXPECT_EQ(RunPosutil(arguments, kDocument), row.outcome);
  }
}

TEST(GetTest, NeedsADictionary) {
  EXPECT_EQ(RunPosutil({"get", "--from", "text", "-", "a"}, "[1]"),
            (Outcome{3, "", "posutil: <stdin>: the document is not a dictionary\n"}));
}

TEST(GetTest, FailsForAValueWithoutAForm) {
  const std::string lone = "the Unicode string has a lone surrogate\n";
  const std::pair<const char*, std::string> rows[] = {{"b", "b: [0]: " + lone},
                                                      {"c", "c: the document: " + lone}};
  for (const auto& [path, message] : rows) {
    EXPECT_EQ(RunPosutil({"get", "--from", "text", "-", "a", path}, "< a 1 b [`D800`] c `DC00` >"),
              (Outcome{3, "", "posutil: <stdin>: " + message}));
  }
}

TEST(FormatTest, IsGuessedFromTheEnding) {
  const Folder folder;
  const std::string json = folder.Put("a.json", "{\"a\":[1,2]}");
  const std::string text = folder.Put("a.txt", "< a [1 2] >");
  const std::string other = folder.Put("a.data", "< a [1 2] >");
  const Outcome expected = {0, "[1,2]\n", ""};
  EXPECT_EQ(RunPosutil({"get", json, "a"}), expected);
  EXPECT_EQ(RunPosutil({"get", text, "a"}), expected);
  EXPECT_EQ(RunPosutil({"get", other, "a", "--from", "text"}), expected);
  EXPECT_EQ(
      RunPosutil({"get", other, "a"}),
      (Outcome{2, "",
               "posutil: " + other + ": cannot tell the format from the file name; use --from\n"}));
  EXPECT_EQ(RunPosutil({"print", "-"}).fStatus, 2);
}

TEST(UsageTest, WrongUsage) {
  const std::vector<std::string> rows[] = {{},
                                           {"frobnicate"},
                                           {"print"},
                                           {"print", "a.json", "b.json"},
                                           {"print", "--to", "yaml", "a.json"},
                                           {"print", "--no-such-option", "a.json"},
                                           {"get", "a.json"},
                                           {"version", "x"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    const Outcome outcome = RunPosutil(row);
    EXPECT_EQ(outcome.fStatus, 2);
    EXPECT_EQ(outcome.fOut, "");
    EXPECT_EQ(outcome.fErr.rfind("posutil: ", 0), 0U) << outcome.fErr;
  }
}

TEST(UsageTest, HelpGivesExamples) {
  EXPECT_EQ(RunPosutil({"--help"}).fStatus, 0);
  for (const std::string command :
       {"print", "get", "convert", "validate", "check-schema", "version"}) {
    const Outcome help = RunPosutil({command, "--help"});
    EXPECT_EQ(help.fStatus, 0);
    EXPECT_EQ(help.fErr, "");
    EXPECT_NE(help.fOut.find("posutil " + command), std::string::npos) << help.fOut;
    EXPECT_NE(help.fOut.find("Example"), std::string::npos) << help.fOut;
  }
}

TEST(VersionTest, DecodesTheLibrarysNumber) {
  const Outcome version = RunPosutil({"version"});
  EXPECT_EQ(version.fStatus, 0);
  EXPECT_EQ(version.fErr, "");
  const std::string expected = "KAPUtils " + std::to_string(KAPUTILS_VERSION_MAJOR) + "." +
                               std::to_string(KAPUTILS_VERSION_MINOR) + "." +
                               std::to_string(KAPUTILS_VERSION_PATCH) + " (" +
                               std::to_string(KAPUTILS_VERSION) + "), ";
  EXPECT_NE(version.fOut.find(expected), std::string::npos) << version.fOut;
}

TEST(InputTest, Unreadable) {
  EXPECT_EQ(RunPosutil({"print", "/nowhere/a\n.json"}),
            (Outcome{3, "", "posutil: /nowhere/a\\x0a.json: No such file or directory\n"}));
  EXPECT_EQ(RunPosutil({"print", "--from", "json", "/"}),
            (Outcome{3, "", "posutil: /: Is a directory\n"}));
}

TEST(LibraryTest, CanBeGivenAndMissing) {
  EXPECT_EQ(RunPosutil({"--library", KAP_LIBRARY_PATH, "get", "--from", "text", "-", "a"}, "<a 1>"),
            (Outcome{0, "1\n", ""}));
  const Outcome missing = RunPosutil({"version", "--library", "/nowhere/lib.so"});
  EXPECT_EQ(missing.fStatus, 3);
  EXPECT_NE(missing.fErr.find("/nowhere/lib.so"), std::string::npos) << missing.fErr;
  // A program without the library beside it.
  const Folder folder;
  const std::string copy = folder.Path("posutil");
  std::filesystem::copy_file(POSUTIL_PATH, copy);
  const Outcome alone =
      RunPosutil({"version"}, "", {.fPrefix = {"sh", "-c", "exec " + copy + " \"$@\""}});
  EXPECT_EQ(alone.fStatus, 3);
  EXPECT_TRUE(alone.fErr.starts_with("posutil: libKAPUtils.so is in none of ")) << alone.fErr;
}

}  // namespace
