// SPDX-License-Identifier: MIT
// What the declarations of the commands and options make: completions of shells, and the manual
// page with its examples.

#include <sstream>

#include "Folder.h"
#include "Posutil.h"

namespace {

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// What the tabulator key offers at the end of a line.
class CompletionTest : public testing::TestWithParam<const char*> {
 protected:
  static Outcome Complete(const std::string& line) {
    return RunPosutil({}, "", {.fPrefix = {POSUTIL_TESTS "/complete", GetParam(), line}});
  }
};

TEST_P(CompletionTest, CommandsOptionsAndValues) {
  const std::pair<const char*, const char*> rows[] = {
      {"posutil pri", "print\n"},
      {"posutil --co", "--color\n"},
      {"posutil --color ne", "never\n"},
      {"posutil print --tr", "--trace\n"},
      {"posutil print --col", "--color\n"},
      {"posutil print --to j", "json\n"},
      {"posutil convert --to=", "json\ntext\ntypea\n"},
      {"posutil validate --schema-", "--schema-from\n"},
      {"posutil validate --schema f", "file.json\n"},
      {"posutil print --compact ", "file.json\n"},
      {"posutil completion ", "bash\nfish\nzsh\n"},
      {"posutil diff file.json f", "file.json\n"},
      {"posutil --library print get --def", "--default\n"},
      {"posutil --library=print get --def", "--default\n"},
  };
  for (const auto& [line, candidates] : rows) {
    SCOPED_TRACE(line);
    EXPECT_EQ(Complete(line), (Outcome{0, candidates, ""}));
  }
}

TEST_P(CompletionTest, EveryCommand) {
  const Outcome commands = Complete("posutil ");
  EXPECT_EQ(commands.fErr, "");
  EXPECT_GE(Lines(commands.fOut).size(), 14U) << commands.fOut;
  for (const std::string& command : Lines(commands.fOut)) {
    const Outcome help = RunPosutil({command, "--help"});
    EXPECT_EQ(help.fStatus, 0) << command;
    EXPECT_EQ(help.fErr, "");
    EXPECT_NE(help.fOut.find("posutil " + command), std::string::npos) << help.fOut;
    EXPECT_NE(help.fOut.find("Example"), std::string::npos) << help.fOut;
  }
}

INSTANTIATE_TEST_SUITE_P(Shells, CompletionTest, testing::Values("bash", "zsh", "fish"),
                         [](const auto& shell) { return std::string(shell.param); });

class ManualTest : public testing::Test {
 protected:
  // The page as man shows it.
  static Outcome Page() {
    const std::string script =
        "export MANWIDTH=1000 LC_ALL=C.UTF-8; \"$0\" \"$@\" | man --warnings -Tutf8 -l - | col -b";
    return RunPosutil({"manual"}, "", {.fPrefix = {"sh", "-c", script}});
  }
  // The lines of a section, without their indentation.
  static std::vector<std::string> Section(const std::string& name) {
    std::vector<std::string> section;
    bool isInside = false;
    for (const std::string& line : Lines(Page().fOut)) {
      const std::size_t indent = line.find_first_not_of(' ');
      if (indent == 0) isInside = line == name;
      if (isInside && indent != 0 && indent != std::string::npos) {
        section.push_back(line.substr(indent));
      }
    }
    return section;
  }
};

TEST_F(ManualTest, HasNoWarnings) {
  const Outcome page = Page();
  EXPECT_EQ(page.fStatus, 0);
  EXPECT_EQ(page.fErr, "");
  EXPECT_NE(page.fOut.find("\n       --color auto|always|never\n"), std::string::npos) << page.fOut;
  EXPECT_NE(page.fOut.find("\n   check-schema\n"), std::string::npos);
}

// Each one runs in a folder that has the files it names.
TEST_F(ManualTest, ExamplesWork) {
  const std::string person = R"({"name":"Ada"})";
  const std::string settings = R"({"title":"T","window":{"size":[800,600]}})";
  const std::string schema = "< Person < category dict required < name string > > >";
  const std::vector<std::string> examples = Section("EXAMPLES");
  EXPECT_GE(examples.size(), 10U);
  for (const std::string& example : examples) {
    SCOPED_TRACE(example);
    const Folder folder;
    for (const char* const home : {".local/share/bash-completion/completions", ".zfunc",
                                   ".config/fish/completions", "people"}) {
      std::filesystem::create_directories(folder.Path(home));
    }
    folder.Put("ada.json", person);
    folder.Put("charles.json", person);
    folder.Put("people/ada.json", person);
    folder.Put("people.txt", schema);
    folder.Put("places.json", R"({"Place":{"category":"string"}})");
    for (const char* const name : {"settings.json", "old.json", "new.json"}) {
      folder.Put(name, settings);
    }
    folder.Put("changes.json", R"({"title":null})");
    folder.Put("patch.json", R"([{"op":"remove","path":"/title"}])");
    const std::string script =
        "export HOME=\"$0\" PATH=\"${1%/*}:$PATH\"; cd \"$HOME\" && "
        "posutil convert settings.json settings.txt && posutil convert settings.json log.typea && "
        "cp log.typea settings.typea && eval \"$2\"";
    const Outcome outcome =
        RunPosutil({example}, "", {.fPrefix = {"sh", "-c", script, folder.Path("")}});
    EXPECT_EQ(outcome.fStatus, 0) << outcome;
    EXPECT_EQ(outcome.fErr, "");
  }
}

}  // namespace
