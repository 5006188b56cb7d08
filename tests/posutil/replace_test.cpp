// SPDX-License-Identifier: MIT
// The output file of a conversion: it is complete or unchanged, and keeps its rights.

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include "Folder.h"
#include "Posutil.h"

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

TEST(ReplaceTest, AFailureLeavesTheFileUnchanged) {
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

// The name of a temporary file does not show whether it exists: it may have none.
bool HasTemporaryFile(pid_t process, const Folder& folder) {
  std::error_code error;
  const fs::path descriptors = "/proc/" + std::to_string(process) + "/fd";
  for (const auto& each : fs::directory_iterator(descriptors, error)) {
    const std::string file = fs::read_symlink(each, error).string();
    if (file.starts_with(folder.Path("#")) || file.starts_with(folder.Path("."))) return true;
  }
  return false;
}

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  ::stat(path.c_str(), &status);
  return status.st_mode & 07777;
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
  Running Start(const std::string& format, int terminal = STDERR_FILENO,
                const std::vector<std::string>& environment = {}) const {
    const Running running({"convert", "--from", format, "-", fFolder.Path("out.typea")},
                          {fPipe[0], STDOUT_FILENO, terminal}, environment);
    while (!HasTemporaryFile(running.Process(), fFolder)) std::this_thread::yield();
    return running;
  }

  const Folder fFolder;
  int fPipe[2] = {-1, -1};
};

// What appears or changes while the program works counts when it replaces the file.
TEST_F(WaitingTest, WhatOthersDoMeanwhile) {
  const std::string out = fFolder.Path("out.typea");
  const struct {
    const char* why;
    bool isOld;
    void (*change)(const std::string& file);
    int status;
    const char* content;
    mode_t mode;
  } rows[] = {
      {"fewer rights", true, [](const auto& file) { fs::permissions(file, fs::perms(0640)); }, 0,
       "POSStreamerTypeA_Version1.0 #1 ", 0640},
      {"a new file", false, [](const auto& file) { std::ofstream(file) << "theirs"; }, 3, "theirs",
       0644},
      {"a link", false, [](const auto& file) { fs::create_symlink("nowhere", file); }, 3, "", 0}};
  const mode_t mask = ::umask(022);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    fs::remove(out);
    if (row.isOld) fFolder.Put("out.typea", "old");
    const Running running = Start("json");
    row.change(out);
    EXPECT_EQ(::write(fPipe[1], "1", 1), 1);
    ::close(std::exchange(fPipe[1], -1));
    EXPECT_EQ(WEXITSTATUS(running.Wait()), row.status);
    EXPECT_EQ(fFolder.Content("out.typea"), row.content);
    EXPECT_EQ(ModeOf(out), row.mode);
    EXPECT_EQ(fFolder.Names(), (Names{"out.typea"}));
    ::close(fPipe[0]);
    ASSERT_EQ(::pipe2(fPipe, O_CLOEXEC), 0);
  }
  ::umask(mask);
}

// The new file comes from the old contents. The process waits for a reader of the trace.
TEST_F(WaitingTest, AnotherFileTakesThePlaceOfTheInput) {
  const std::string trace = fFolder.Path("trace");
  ASSERT_EQ(::mkfifo(trace.c_str(), 0600), 0);
  const std::string file = fFolder.Put("a.json", "[1]");
  const Running running({"convert", "--trace", trace, file, file},
                        {STDIN_FILENO, STDOUT_FILENO, fPipe[1]});
  while (!HasTemporaryFile(running.Process(), fFolder)) std::this_thread::yield();
  fs::rename(fFolder.Put("new", "[2]"), file);
  std::ifstream reader(trace);
  EXPECT_FALSE(std::string(std::istreambuf_iterator<char>(reader), {}).empty());
  EXPECT_EQ(WEXITSTATUS(running.Wait()), 3);
  char message[1000];
  const ssize_t size = ::read(fPipe[0], message, sizeof message);
  EXPECT_EQ(std::string(message, static_cast<std::size_t>(std::max<ssize_t>(size, 0))),
            "posutil: " + file + ": another process has replaced or removed the file\n");
  EXPECT_EQ(fFolder.Content("a.json"), "[2]");
  EXPECT_EQ(fFolder.Names(), (Names{"a.json", "out.typea", "trace"}));
}

void ExpectDeath(const Running& running, int signal) {
  const int status = running.Wait();
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
}

class InterruptedTest : public WaitingTest, public testing::WithParamInterface<int> {};

TEST_P(InterruptedTest, LeavesTheFileUnchanged) {
  const Running running = Start("json");
  ::kill(running.Process(), GetParam());
  ExpectDeath(running, GetParam());
  EXPECT_EQ(fFolder.Names(), (Names{"out.typea"}));
  EXPECT_EQ(fFolder.Content("out.typea"), "old");
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedTest,
                         testing::Values(SIGHUP, SIGINT, SIGTERM, SIGXCPU, SIGUSR1, SIGKILL));

TEST(ReplaceTest, TheSameFileAndLinksAndModes) {
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

TEST(ReplaceTest, WritesDevicesDirectly) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "[1]");
  for (const std::string to : {"typea", "json"}) {
    EXPECT_EQ(RunPosutil({"convert", in, "/dev/null", "--to", to}), (Outcome{0, "", ""}));
  }
  EXPECT_EQ(RunPosutil({"convert", in, "--to", "json", folder.Path(".")}),
            (Outcome{3, "", "posutil: " + folder.Path(".") + ": Is a directory\n"}));
}

// Other programs may have written to a file that the caller holds open, and may continue.
TEST(ReplaceTest, WritesThroughDescriptorsOfTheCaller) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "[1]");
  const std::string log = folder.Put("log", "before ");
  const int out = ::open(log.c_str(), O_WRONLY | O_APPEND);
  for (const std::string& name : {std::string("/dev/stdout"), log}) {
    EXPECT_EQ(RunPosutil({"convert", in, name, "--to", "json"}, "", {.fOut = out}).fStatus, 0);
  }
  const std::string other = "/dev/fd/" + std::to_string(out);
  EXPECT_EQ(RunPosutil({"convert", in, other, "--to", "json"}), (Outcome{0, "", ""}));
  EXPECT_EQ(RunPosutil({"convert", in, "/dev/stderr", "--to", "json"}),
            (Outcome{0, "", "[\n  1\n]\n"}));
  EXPECT_EQ(::write(out, "after", 5), 5);
  ::close(out);
  EXPECT_EQ(folder.Content("log"), "before [\n  1\n]\n[\n  1\n]\n[\n  1\n]\nafter");
}

// The bytes of an access control list: version 2, then tag, rights and id of each entry.
std::string AccessList(mode_t user, mode_t userRights, mode_t group, mode_t mask, mode_t other) {
  std::string list("\2\0\0\0", 4);
  const auto add = [&list](unsigned short tag, mode_t rights, unsigned id) {
    const auto perm = static_cast<unsigned short>(rights);
    list.append(reinterpret_cast<const char*>(&tag), 2);
    list.append(reinterpret_cast<const char*>(&perm), 2);
    list.append(reinterpret_cast<const char*>(&id), 4);
  };
  add(0x01, 6, ~0U);
  add(0x02, userRights, user);
  add(0x04, group, ~0U);
  add(0x10, mask, ~0U);
  add(0x20, other, ~0U);
  return list;
}

constexpr char kAccess[] = "system.posix_acl_access";
constexpr char kDefault[] = "system.posix_acl_default";

bool SetList(const std::string& path, const char* name, const std::string& list) {
  return ::setxattr(path.c_str(), name, list.data(), list.size(), 0) == 0;
}

std::string ListOf(const std::string& path) {
  char list[256];
  const ssize_t size = ::getxattr(path.c_str(), kAccess, list, sizeof list);
  return {list, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

// A file with a list shows the mask of the list as the rights of its group.
TEST(RightsTest, AccessControlLists) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "1");
  const std::string list = AccessList(1234, 4, 0, 6, 0);
  const std::string listed = folder.Put("listed.txt", "old");
  if (!SetList(listed, kAccess, list)) GTEST_SKIP() << "no access control lists here";
  const std::string plain = folder.Put("plain.txt", "old");
  fs::permissions(plain, fs::perms(0640));
  ASSERT_TRUE(SetList(folder.Path("."), kDefault, AccessList(1234, 7, 7, 4, 0)));
  const std::string made = folder.Put("made.txt", "made like any new file");
  for (const std::string out : {"listed.txt", "plain.txt", "new.txt"}) {
    ASSERT_EQ(RunPosutil({"convert", in, folder.Path(out)}), (Outcome{0, "", ""}));
    EXPECT_EQ(folder.Content(out), "1\n");
  }
  EXPECT_EQ(ListOf(listed), list);
  EXPECT_EQ(ModeOf(listed), 0660U);
  EXPECT_EQ(ListOf(plain), "");
  EXPECT_EQ(ModeOf(plain), 0640U);
  EXPECT_EQ(ListOf(folder.Path("new.txt")), ListOf(made));
}

// Members of the old group become others when the group cannot stay.
TEST(RightsTest, AnotherGroupWidensNothing) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root, to become another user";
  const Folder folder;
  fs::permissions(folder.Path("."), fs::perms(0777));
  const std::string in = folder.Put("in.json", "1");
  const struct {
    mode_t before;
    mode_t after;
  } rows[] = {{0606, 0600}, {0666, 0666}, {0646, 0644}, {0662, 0622}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.before);
    const std::string out = folder.Put("out.txt", "old");
    ASSERT_EQ(::chown(out.c_str(), 0, 12345), 0);
    fs::permissions(out, fs::perms(row.before));
    ASSERT_EQ(RunPosutil({"convert", in, out}, "", {.fPrefix = AsAnotherUser()}),
              (Outcome{0, "", ""}));
    EXPECT_EQ(ModeOf(out), row.after);
    fs::remove(out);
  }
}

// No name leads to such a file, so it cannot be replaced.
TEST(ReplaceTest, AFileWithoutANameIsWrittenDirectly) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "[1]");
  for (const std::string removed : {"gone", "folder"}) {
    SCOPED_TRACE(removed);
    if (removed == "folder") fs::create_directory(folder.Path(removed));
    const std::string gone =
        folder.Put(removed == "folder" ? "folder/gone" : "gone", "longer than the new content");
    const int file = ::open(gone.c_str(), O_RDWR | O_CLOEXEC);
    fs::remove_all(folder.Path(removed));
    const std::string name = "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(file);
    EXPECT_EQ(RunPosutil({"convert", in, name, "--to", "json"}), (Outcome{0, "", ""}));
    char content[100];
    const ssize_t size = ::pread(file, content, sizeof content, 0);
    EXPECT_EQ(std::string(content, static_cast<std::size_t>(size)), "[\n  1\n]\n");
    EXPECT_EQ(folder.Names(), (Names{"in.json"}));
    ::close(file);
  }
}

// The work takes longer than a second. The other tests have no terminal and expect no output.
TEST_F(WaitingTest, ATerminalShowsTheProgress) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_TRUE(::grantpt(master) == 0 && ::unlockpt(master) == 0);
  const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  const Running running = Start("typea", terminal, {"TERM=xterm"});
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
