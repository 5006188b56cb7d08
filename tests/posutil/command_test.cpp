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
      {"the empty key", {"[0]", "..e"}, {1, "[]\n", "posutil: <stdin>: no value at \"[0]\"\n"}},
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
       {2, "", "posutil: malformed path \"[0,1]\"\n"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    std::vector<std::string> arguments = {"get", "--from", "text", "-"};
    arguments.insert(arguments.end(), row.paths.begin(), row.paths.end());
    EXPECT_EQ(RunPosutil(arguments, kDocument), row.outcome);
  }
}

TEST(UsageTest, WrongUsage) {
  const struct {
    std::vector<std::string> arguments;
    std::string message;
    std::string command;  // whose help the message names
  } rows[] = {
      {{}, "no command", ""},
      {{"frobnicate"}, "unknown command \"frobnicate\"", ""},
      {{"prnt", "--to", "json", "a"}, "unknown command \"prnt\"; did you mean print?", ""},
      {{"pritn"}, "unknown command \"pritn\"; did you mean print?", ""},
      {{"schema", "a"}, "unknown command \"schema\"; did you mean check-schema?", ""},
      {{"--colour=never", "a\n"}, "unknown command \"a\\x0a\"", ""},
      {{"--colour=never"}, "unknown option --colour; did you mean --color?", ""},
      {{"--color", "purple", "print"}, "--color: \"purple\" is not auto, always or never", ""},
      {{"print"}, "missing FILE", "print "},
      {{"print", "a", "b"}, "unexpected argument \"b\"", "print "},
      {{"print", "--to", "jsn", "a"},
       "--to: \"jsn\" is not tree, json, text or typea; did you mean json?",
       "print "},
      {{"print", "--no-such-option", "a"}, "unknown option --no-such-option", "print "},
      {{"print", "--col", "a"}, "unknown option --col; did you mean --color?", "print "},
      {{"print", "-x", "a"}, "unknown option -x", "print "},
      {{"print", "a", "--to"}, "--to needs a value: tree|json|text|typea", "print "},
      {{"print", "--to", "", "a"}, "--to needs a value: tree|json|text|typea", "print "},
      {{"completion", ""}, "SHELL needs a value", "completion "},
      {{"print", "--all=x", "a"}, "--all takes no value", "print "},
      {{"print", "--to=json", "--to=text", "a"}, "--to is there more than once", "print "},
      {{"print", "--indent", "33", "a"},
       "--indent: \"33\" is neither a number from 0 to 32 nor tab",
       "print "},
      {{"print", "--indent", "x", "a"},
       "--indent: \"x\" is neither a number from 0 to 32 nor tab",
       "print "},
      {{"print", "--indent", "2x", "a"},
       "--indent: \"2x\" is neither a number from 0 to 32 nor tab",
       "print "},
      {{"print", "--indent=1", "--compact", "a"}, "--compact excludes --indent", "print "},
      {{"--from", "json", "print", "a"}, "--from belongs after the command", "print "},
      {{"get", "a"}, "missing PATH", "get "},
      // Only a command reads negative numbers, not a file with its name.
      {{"print", "set", "-5"}, "unknown option -5", "print "},
      {{"completion", "tcsh"}, "SHELL: \"tcsh\" is not bash, zsh or fish", "completion "},
      {{"version", "x"}, "unexpected argument \"x\"", "version "},
      // The missing option is the misspelt one.
      {{"validate", "--schem", "a", "--type", "T", "b"},
       "unknown option --schem; did you mean --schema?",
       "validate "},
      {{"validate", "a"}, "missing --schema SCHEMA and --type NAME", "validate "},
      {{"check-schema", "--max-errors", "x", "a"},
       "--max-errors: \"x\" is not a number",
       "check-schema "},
      {{"check-schema", "--max-errors", "-1", "a"},
       "--max-errors: \"-1\" is below 0",
       "check-schema "},
      {{"check-schema", "--max-errors", "-1x", "a"},
       "--max-errors: \"-1x\" is not a number",
       "check-schema "},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    EXPECT_EQ(
        RunPosutil(row.arguments),
        (Outcome{2, "", "posutil: " + row.message + "\nSee posutil " + row.command + "--help.\n"}));
  }
}

// What looks like a command after the first one is an argument.
TEST(UsageTest, NamesOfCommandsAsArguments) {
  EXPECT_EQ(RunPosutil({"get", "--from", "text", "-", "version", "print"}, "<version 1 print 2>"),
            (Outcome{0, "1\n2\n", ""}));
}

TEST(VersionTest, DecodesTheLibrarysNumber) {
  const Outcome version = RunPosutil({"version"});
  // The option does not need the library.
  EXPECT_EQ(RunPosutil({"--version", "--library", "/nowhere"}),
            (Outcome{0, version.fOut.substr(0, version.fOut.find('\n') + 1), ""}));
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
  EXPECT_EQ(RunPosutil({"get", "--from", "json", "[nowhere]", "a"}),
            (Outcome{3, "", "posutil: [nowhere]: No such file or directory\n"}));
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

// The trace changes neither the output nor the exit status. What it holds is tested with the host;
// here, that objects show their kind and that every procedure of the library is declared.
TEST(TraceTest, WritesCalls) {
  const Folder folder;
  const std::string path = folder.Path("calls.txt");
  EXPECT_EQ(RunPosutil({"--trace", path, "get", "--from", "text", "-", "a.b"}, "<a <b (x)>>"),
            (Outcome{0, "x\n", ""}));
  std::ifstream file(path);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_NE(text.find(": POSDictInterface.Get(dictionary, \"a\") {\n"), std::string::npos);
  EXPECT_NE(text.find(" } Get = string ("), std::string::npos);
  EXPECT_EQ(text.find("not traced"), std::string::npos);
  EXPECT_EQ(RunPosutil({"print", "--trace", "/no/folder/calls", "--from", "text", "-"}, "1"),
            (Outcome{3, "",
                     "posutil: cannot write \"/no/folder/calls\": "
                     "No such file or directory\n"}));
  EXPECT_EQ(RunPosutil({"print", "--trace", "/dev/full", "--from", "text", "-"}, "1"),
            (Outcome{3, "1\n",
                     "posutil: cannot write \"/dev/full\": No space left on device; "
                     "the rest is lost\n"}));
  EXPECT_EQ(RunPosutil({"--trace", path, "print", path}),
            (Outcome{2, "", "posutil: the trace would replace " + path + "\n"}));
  // A trace of an earlier run is not a document; nor is it one of another file system.
  for (const std::string& document : {folder.Put("a.txt", "1"), std::string("/dev/fd/0")}) {
    EXPECT_EQ(RunPosutil({"--trace", path, "print", "--from", "text", document}, "1"),
              (Outcome{0, "1\n", ""}));
  }
}

}  // namespace
