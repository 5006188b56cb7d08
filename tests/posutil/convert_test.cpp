// SPDX-License-Identifier: MIT
// Conversions of files from each format to each other.

#include "Folder.h"
#include "Posutil.h"

namespace {

using Names = std::set<std::string>;

TEST(ConvertTest, ThereAndBack) {
  const Folder folder;
  folder.Put("0.json", R"({"b":[1,-0.0,1e20,"x\n\")\\é",[],{}],"a":{"$unicode":"é😀"},"":"true"})");
  const std::string formats[] = {"json", "text", "typea"};
  for (const std::string& from : formats) {
    const std::string original = folder.Path("original." + from);
    ASSERT_EQ(RunPosutil({"convert", folder.Path("0.json"), original}), (Outcome{0, "", ""}));
    for (const std::string& to : formats) {
      SCOPED_TRACE(from + " to " + to);
      const std::string there = folder.Path("there." + to);
      EXPECT_EQ(RunPosutil({"convert", original, there}), (Outcome{0, "", ""}));
      EXPECT_EQ(RunPosutil({"convert", there, folder.Path("back." + from)}), (Outcome{0, "", ""}));
      EXPECT_EQ(folder.Content("back." + from), folder.Content("original." + from));
    }
  }
}

TEST(ConvertTest, ALinkToItself) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "1");
  const std::string out = folder.Path("loop.json");
  std::filesystem::create_symlink("loop.json", out);
  EXPECT_EQ(RunPosutil({"convert", in, out}),
            (Outcome{3, "", "posutil: " + out + ": Too many levels of symbolic links\n"}));
}

// It leaves no copy in which to look up what is lost.
TEST(ConvertTest, AFileThatReplacesItselfLosesNothing) {
  const Folder folder;
  const std::string file = folder.Put("a.json", "{\"a\":true}");
  const Outcome refused = RunPosutil({"convert", file, folder.Path("./a.json")});
  EXPECT_EQ(refused.fStatus, 3);
  EXPECT_EQ(FirstMessage(refused), file + ":1:6: true is read as the string \"true\"");
  EXPECT_EQ(folder.Content("a.json"), "{\"a\":true}");
  EXPECT_EQ(RunPosutil({"convert", "--from=json", "-", file}, "",
                       {.fPrefix = {"sh", "-c", "exec \"$0\" \"$@\" < " + file}})
                .fStatus,
            3);
  EXPECT_EQ(folder.Content("a.json"), "{\"a\":true}");
  EXPECT_EQ(RunPosutil({"convert", "--loss=keep", file, file}), (Outcome{0, "", ""}));
  EXPECT_EQ(folder.Content("a.json"), "{\n  \"a\": true\n}\n");
  EXPECT_EQ(RunPosutil({"convert", "--loss=warn", file, file}).fStatus, 0);
  EXPECT_EQ(folder.Content("a.json"), "{\n  \"a\": \"true\"\n}\n");
}

TEST(ConvertTest, WrongUsageTouchesNothing) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "1");
  const std::vector<std::string> rows[] = {{in},
                                           {in, folder.Path("out")},
                                           {in, "-"},
                                           {"-", folder.Path("out.json")},
                                           {in, folder.Path("out.json"), "--to", "tree"},
                                           {in, folder.Path("out.json"), in}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    std::vector<std::string> arguments = {"convert"};
    arguments.insert(arguments.end(), row.begin(), row.end());
    EXPECT_EQ(RunPosutil(arguments, "%").fStatus, 2);
  }
  EXPECT_EQ(folder.Names(), (Names{"in.json"}));
}

}  // namespace
