// Conversions of files: round trips, and the state of the output file in every case.

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

#include "Folder.h"
#include "Posutil.h"

namespace {

namespace fs = std::filesystem;
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
    EXPECT_EQ(RunPosutil(arguments).fStatus, 2);
  }
  EXPECT_EQ(folder.Names(), (Names{"in.json"}));
}

TEST(ConvertTest, AFailureLeavesTheFileUnchanged) {
  const Folder folder;
  folder.Put("slot.json", "[1,null]");
  folder.Put("wrong.json", "[1");
  folder.Put("cut.typea", "POSStreamerTypeA_Version1.0 [#1 ");
  folder.Put("binary.json", R"({"$binary":"","base64":""})");
  for (const std::string out : {"out.typea", "out.txt"}) folder.Put(out, "old");
  const Names before = folder.Names();
  const std::vector<std::string> rows[] = {
      {"slot.json", "out.typea"},  {"wrong.json", "out.typea"},
      {"cut.typea", "out.txt"},    {"binary.json", "out.txt"},
      {"nowhere.json", "out.txt"}, {"binary.json", "nowhere/out.typea"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    EXPECT_EQ(RunPosutil({"convert", folder.Path(row[0]), folder.Path(row[1])}).fStatus, 3);
    EXPECT_EQ(folder.Names(), before);
    EXPECT_EQ(folder.Content("out.typea") + folder.Content("out.txt"), "oldold");
  }
}

// A conversion that waits for more input when its temporary file already exists.
class WaitingTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(::pipe2(fPipe, O_CLOEXEC), 0);
    fFolder.Put("out.typea", "old");
  }
  void TearDown() override {
    ::close(fPipe[0]);
    if (fPipe[1] >= 0) ::close(fPipe[1]);
  }
  void AwaitTemporaryFile() const {
    while (fFolder.Names().size() < 2) std::this_thread::yield();
  }

  const Folder fFolder;
  int fPipe[2] = {-1, -1};
};

class InterruptedTest : public WaitingTest, public testing::WithParamInterface<int> {};

TEST_P(InterruptedTest, LeavesTheFileUnchanged) {
  const Running running({"convert", "--from", "json", "-", fFolder.Path("out.typea")},
                        {fPipe[0], STDOUT_FILENO, STDERR_FILENO});
  AwaitTemporaryFile();
  ::kill(running.Process(), GetParam());
  const int status = running.Wait();
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == GetParam()) << status;
  EXPECT_EQ(fFolder.Names(), (Names{"out.typea"}));
  EXPECT_EQ(fFolder.Content("out.typea"), "old");
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedTest,
                         testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM));

TEST(ConvertTest, TheSameFileAndLinksAndModes) {
  const Folder folder;
  const std::string in = folder.Put("in.typea", "POSStreamerTypeA_Version1.0 [#1 ]");
  const std::string expected = "[\n  1\n]\n";
  ASSERT_EQ(RunPosutil({"convert", "--to", "json", in, in}), (Outcome{0, "", ""}));
  EXPECT_EQ(folder.Content("in.typea"), expected);

  folder.Put("target", "old");
  fs::permissions(folder.Path("target"), fs::perms(04640));  // writing clears the set-user-ID bit
  fs::create_symlink("target", folder.Path("link.json"));
  fs::create_symlink("new", folder.Path("dangling.json"));
  for (const std::string out : {"link.json", "dangling.json"}) {
    ASSERT_EQ(RunPosutil({"convert", "--from", "json", in, folder.Path(out)}),
              (Outcome{0, "", ""}));
    EXPECT_TRUE(fs::is_symlink(folder.Path(out)));
    EXPECT_EQ(folder.Content(out), expected);
  }
  EXPECT_EQ(folder.Names(), (Names{"in.typea", "target", "link.json", "new", "dangling.json"}));
  EXPECT_EQ(fs::status(folder.Path("target")).permissions(), fs::perms(0640));
  const mode_t mask = ::umask(0);
  ::umask(mask);
  EXPECT_EQ(fs::status(folder.Path("new")).permissions(), fs::perms(0666 & ~mask));
}

TEST(ConvertTest, WritesDevicesDirectly) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "[1]");
  for (const std::string to : {"typea", "json"}) {
    EXPECT_EQ(RunPosutil({"convert", in, "/dev/null", "--to", to}), (Outcome{0, "", ""}));
  }
  EXPECT_EQ(RunPosutil({"convert", in, "--to", "json", folder.Path(".")}),
            (Outcome{3, "", "posutil: " + folder.Path(".") + ": Is a directory\n"}));
}

// Under any name: other programs may have written to it and may continue.
TEST(ConvertTest, WritesStandardOutputDirectly) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "[1]");
  const std::string log = folder.Put("log", "before ");
  const int out = ::open(log.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  for (const std::string& name : {std::string("/dev/stdout"), log}) {
    EXPECT_EQ(RunPosutil({"convert", in, name, "--to", "json"}, "", {.fOut = out}).fStatus, 0);
  }
  EXPECT_EQ(::write(out, "after", 5), 5);
  ::close(out);
  EXPECT_EQ(folder.Content("log"), "before [\n  1\n]\n[\n  1\n]\nafter");
}

// The work takes longer than a second. The other tests have no terminal and expect no output.
TEST_F(WaitingTest, ATerminalShowsTheProgress) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_TRUE(::grantpt(master) == 0 && ::unlockpt(master) == 0);
  const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  const Running running({"convert", "--from", "typea", "-", fFolder.Path("out.typea")},
                        {fPipe[0], STDOUT_FILENO, terminal}, {"TERM=xterm"});
  AwaitTemporaryFile();
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  const std::string document = "POSStreamerTypeA_Version1.0 \"" + std::string(200000, 'x') + "\"";
  EXPECT_EQ(::write(fPipe[1], document.data(), document.size()),
            static_cast<ssize_t>(document.size()));
  ::close(std::exchange(fPipe[1], -1));
  EXPECT_EQ(running.Wait(), 0);
  EXPECT_EQ(fFolder.Content("out.typea"), document);
  // A terminal delivers the text in pieces.
  std::string text;
  pollfd ready = {master, POLLIN, 0};
  while (!text.ends_with("%\r\033[K") && !text.ends_with("B\r\033[K") &&
         ::poll(&ready, 1, 10'000) > 0) {
    char piece[1000];
    const ssize_t size = ::read(master, piece, sizeof piece);
    text.append(piece, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  }
  EXPECT_EQ(text.rfind("\r\033[Kreading ", 0), 0U) << text;
  EXPECT_TRUE(text.ends_with("\r\033[K")) << text;
  ::close(terminal);
  ::close(master);
}

}  // namespace
