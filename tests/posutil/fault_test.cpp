// SPDX-License-Identifier: MIT
// Every call of the C library that posutil depends on fails or is the last one: the output file is
// the old one or the new one, and nothing else is left.

#include <signal.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "Folder.h"
#include "Posutil.h"

namespace {

using Names = std::set<std::string>;

const std::string kOld = "[\n  1\n]\n";

struct Fault {
  const char* fCall;
  long fFirst;
  long fCount;
  std::string fAction;
};

const char kChanged[] = "[\n  2\n]\n";  // by set

// A conversion of a small document to an existing file, with a fault.
class FaultTest : public testing::Test {
 protected:
  FaultTest() {
    std::string in = "[\"" + std::string(200'000, 'x') + "\"";
    for (int i = 0; i < 100; ++i)
      in += ",{\"key" + std::to_string(i) + "\":" + std::to_string(i) + "}";
    fFolder.Put("in.json", in + "]");
    RunPosutil({"convert", fFolder.Path("in.json"), fFolder.Path("out.json")});
    fNew = fFolder.Content("out.json");
  }

  static Setting With(const Fault& fault, const std::string& fired, bool isNamed) {
    Setting setting;
    setting.fEnvironment = {"LD_PRELOAD=" KAP_FAULT_INJECTOR,
                            "KAP_FAULT=" + std::string(fault.fCall) + " " +
                                std::to_string(fault.fFirst) + " " + std::to_string(fault.fCount) +
                                " " + fault.fAction,
                            "KAP_FIRED=" + fired};
    if (isNamed) setting.fEnvironment.emplace_back("KAP_NAMED=1");
    return setting;
  }

  Outcome Convert(const Fault& fault, bool isNamed = false) {
    fFolder.Put("out.json", kOld);
    std::filesystem::remove(fMarks.Path("fired"));
    return RunPosutil({"convert", fFolder.Path("in.json"), fFolder.Path("out.json")}, "",
                      With(fault, fMarks.Path("fired"), isNamed));
  }
  bool HasFired() const { return fMarks.Names().count("fired") > 0; }
  bool IsNew() const { return fFolder.Content("out.json") == fNew; }

  // Whatever the outcome, the folder holds two files, and the output is the old or the new one.
  void ExpectWhole() const {
    EXPECT_EQ(fFolder.Names(), (Names{"in.json", "out.json"}));
    EXPECT_TRUE(IsNew() || fFolder.Content("out.json") == kOld);
  }

  const Folder fFolder;
  const Folder fMarks;
  std::string fNew;
};

// Fails the nth call, for n = 1, 2, 3... until none fails.
TEST_F(FaultTest, TheNthCallFails) {
  const struct {
    const char* call;
    int error;
    bool isNamed;
    int atLeast;  // the number of calls
  } rows[] = {
      {"write", ENOSPC, false, 3}, {"write", EIO, true, 3},     {"fsync", EIO, false, 1},
      {"fsync", EIO, true, 1},     {"link", EIO, false, 1},     {"rename", EACCES, false, 1},
      {"rename", EACCES, true, 1}, {"open", EACCES, true, 2},   {"fchmod", EPERM, true, 1},
      {"fchmod", EPERM, false, 1}, {"fgetxattr", EIO, false, 4}};
  for (const auto& row : rows) {
    int n = 1;
    for (;; ++n) {
      SCOPED_TRACE(std::string(row.call) + " " + std::to_string(n));
      const Outcome outcome = Convert({row.call, n, 1, std::to_string(row.error)}, row.isNamed);
      ExpectWhole();
      if (!HasFired()) break;
      EXPECT_EQ(outcome.fStatus, 3);
      EXPECT_NE(outcome.fErr.find(std::strerror(row.error)), std::string::npos) << outcome.fErr;
      EXPECT_FALSE(IsNew());
    }
    EXPECT_TRUE(IsNew());
    EXPECT_GT(n, row.atLeast) << row.call;
  }
}

// Not all faults stop a conversion: without a child, posutil replaces the file itself.
TEST_F(FaultTest, NoProcessLeft) {
  EXPECT_EQ(Convert({"fork", 1, 1, std::to_string(EAGAIN)}), (Outcome{0, "", ""}));
  EXPECT_TRUE(HasFired() && IsNew());
  ExpectWhole();
}

// One process does the work of two; with none, nothing is checked.
TEST_F(FaultTest, NoProcessForTheWork) {
  const std::string schema = fFolder.Put("schema.txt", "< L < category array membertype any > >");
  const std::pair<long, Outcome> rows[] = {
      {2, {0, "3 files checked: 3 valid, 0 not valid, 0 messages\n", ""}},
      {1, {3, "", "posutil: cannot start a process: Resource temporarily unavailable\n"}}};
  for (const auto& [first, outcome] : rows) {
    const std::string in = fFolder.Path("in.json");
    EXPECT_EQ(
        RunPosutil({"validate", "--schema", schema, "--type", "L", "--jobs", "3", in, in, in}, "",
                   With({"fork", first, 100, std::to_string(EAGAIN)}, fMarks.Path("fired"), false)),
        outcome);
  }
}

// Without random bytes a leftover of an earlier run takes no name away.
TEST_F(FaultTest, NoRandomBytes) {
  const Fault none = {"getrandom", 1, 1'000'000'000L, std::to_string(EAGAIN)};
  for (const bool isNamed : {false, true}) {
    EXPECT_EQ(Convert(none, isNamed), (Outcome{0, "", ""}));
    EXPECT_TRUE(HasFired() && IsNew());
    ExpectWhole();
  }
}

// A parent may ignore SIGCHLD for its children; then nothing waits for a child of posutil.
TEST_F(FaultTest, IgnoredChildren) {
  const Fault rows[] = {{"none", 1, 0, "0"}, {"rename", 1, 1, std::to_string(EACCES)}};
  for (const Fault& row : rows) {
    fFolder.Put("out.json", kOld);
    Setting setting = With(row, fMarks.Path("fired"), false);
    setting.fPrefix = {"env", "--ignore-signal=CHLD"};
    const std::string out = fFolder.Path("out.json");
    const Outcome outcome = RunPosutil({"convert", fFolder.Path("in.json"), out}, "", setting);
    const bool fails = row.fCount > 0;
    EXPECT_EQ(outcome, (fails ? Outcome{3, "", "posutil: " + out + ": Permission denied\n"}
                              : Outcome{0, "", ""}));
    EXPECT_EQ(IsNew(), !fails);
    ExpectWhole();
  }
}

// Some file systems cannot rename to a free name only.
TEST_F(FaultTest, ANewNamedFile) {
  for (const int error : {0, EINVAL, EACCES}) {
    SCOPED_TRACE(error);
    const std::string out = fFolder.Path("new.json");
    const Fault fault = {"renameat2", 1, error != 0, std::to_string(error)};
    const Outcome outcome = RunPosutil({"convert", fFolder.Path("in.json"), out}, "",
                                       With(fault, fMarks.Path("fired"), true));
    EXPECT_EQ(outcome.fStatus, error == EACCES ? 3 : 0) << outcome.fErr;
    EXPECT_EQ(fFolder.Content("new.json"), error == EACCES ? "" : fNew);
    std::filesystem::remove(out);
    EXPECT_EQ(fFolder.Names(), (Names{"in.json", "out.json"}));
  }
}

// The process that makes the call dies. A child that dies makes posutil fail.
TEST_F(FaultTest, KilledAtTheNthCall) {
  for (const char* const call : {"open", "write", "fsync", "fork", "link", "rename"}) {
    int n = 1;
    for (;; ++n) {
      SCOPED_TRACE(std::string(call) + " " + std::to_string(n));
      const Outcome outcome = Convert({call, n, 1, "kill"});
      ExpectWhole();
      if (!HasFired()) break;
      EXPECT_NE(outcome.fStatus, 0);
      EXPECT_FALSE(IsNew());
    }
    EXPECT_GT(n, 1) << call;
  }
}

TEST_F(FaultTest, KilledAtTheNthCallWhereTheOldFileIsKept) {
  const std::string out = fFolder.Path("out.json");
  for (const char* const call : {"open", "write", "fsync", "fork", "link", "rename"}) {
    int n = 1;
    for (;; ++n) {
      SCOPED_TRACE(std::string(call) + " " + std::to_string(n));
      fFolder.Put("out.json", kOld);
      std::filesystem::remove(fFolder.Path("out.json.old"));
      std::filesystem::remove(fMarks.Path("fired"));
      RunPosutil({"set", "--in-place=.old", out, "[0]", "2"}, "",
                 With({call, n, 1, "kill"}, fMarks.Path("fired"), false));
      const bool isDone = fFolder.Content("out.json") == kChanged;
      EXPECT_EQ(fFolder.Content("out.json"), isDone ? kChanged : kOld);
      EXPECT_EQ(fFolder.Content("out.json.old"), isDone ? kOld : "");
      EXPECT_EQ(fFolder.Names().size(), isDone ? 3u : 2u);
      if (!HasFired()) break;
    }
    EXPECT_GT(n, 1) << call;
  }
}

// Posutil dies while its child replaces the file: the child completes that.
TEST_F(FaultTest, KilledWhileItsChildWorks) {
  for (const char* const call : {"link", "rename"}) {
    SCOPED_TRACE(call);
    EXPECT_EQ(Convert({call, 1, 1, "orphan"}).fStatus, -SIGKILL);
    EXPECT_TRUE(HasFired());
    while (!IsNew()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ExpectWhole();
  }
}

// The same where the old file gets the name of an older one.
TEST_F(FaultTest, KilledWhileItsChildKeepsTheOldFile) {
  const std::string out = fFolder.Path("out.json");
  for (const Fault& fault : {Fault{"link", 1, 1, "orphan"}, Fault{"link", 2, 1, "orphan"},
                             Fault{"rename", 1, 1, "orphan"}, Fault{"rename", 2, 1, "orphan"}}) {
    SCOPED_TRACE(fault.fCall);
    fFolder.Put("out.json", kOld);
    fFolder.Put("out.json.old", "older");
    std::filesystem::remove(fMarks.Path("fired"));
    EXPECT_EQ(RunPosutil({"set", "--in-place=.old", out, "[0]", "2"}, "",
                         With(fault, fMarks.Path("fired"), false))
                  .fStatus,
              -SIGKILL);
    ASSERT_TRUE(HasFired());
    while (fFolder.Content("out.json.old") != kOld) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(fFolder.Content("out.json"), kChanged);
    EXPECT_EQ(fFolder.Names(), (Names{"in.json", "out.json", "out.json.old"}));
  }
}

// A failure leaves the file and its older copy. Without links, the old file is copied, and only a
// new file without a name cannot get one.
TEST_F(FaultTest, KeepsTheOldFileOnlyIfTheNewOneIsThere) {
  const std::string out = fFolder.Path("out.json");
  for (const bool isNamed : {false, true}) {
    for (const Fault& fault : {Fault{"rename", 1, 1, "13"}, Fault{"rename", 2, 1, "13"},
                               Fault{"fork", 1, 1, "11"}, Fault{"link", 1, 1, "95"}}) {
      SCOPED_TRACE(fault.fCall + std::to_string(fault.fFirst) + (isNamed ? " named" : ""));
      fFolder.Put("out.json", kOld);
      fFolder.Put("out.json.old", "older");
      std::filesystem::remove(fMarks.Path("fired"));
      const int status = RunPosutil({"set", "--in-place=.old", out, "[0]", "2"}, "",
                                    With(fault, fMarks.Path("fired"), isNamed))
                             .fStatus;
      ASSERT_TRUE(HasFired());
      const std::string call = fault.fCall;
      const bool isDone = call == "fork" || (call == "link" && isNamed);
      EXPECT_EQ(status, isDone ? 0 : 3);
      EXPECT_EQ(fFolder.Content("out.json"), isDone ? kChanged : kOld);
      EXPECT_EQ(fFolder.Content("out.json.old"), isDone ? kOld : "older");
      EXPECT_EQ(fFolder.Names(), (Names{"in.json", "out.json", "out.json.old"}));
    }
  }
}

TEST_F(FaultTest, SignalsRemoveANamedFile) {
  for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGXCPU, SIGUSR1}) {
    SCOPED_TRACE(signal);
    EXPECT_EQ(Convert({"write", 2, 1, std::to_string(-signal)}, true).fStatus, -signal);
    EXPECT_TRUE(HasFired() && !IsNew());
    ExpectWhole();
  }
  // One that is ignored ends nothing.
  std::filesystem::remove(fMarks.Path("fired"));
  Setting setting = With({"write", 2, 1, std::to_string(-SIGHUP)}, fMarks.Path("fired"), true);
  setting.fPrefix = {"env", "--ignore-signal=HUP"};
  EXPECT_EQ(RunPosutil({"convert", fFolder.Path("in.json"), fFolder.Path("out.json")}, "", setting),
            (Outcome{0, "", ""}));
  EXPECT_TRUE(HasFired() && IsNew());
  ExpectWhole();
}

// Posutil ignores the signal of the limit, and its destructors remove a named file.
TEST_F(FaultTest, AFileSizeLimit) {
  for (const bool isNamed : {false, true}) {
    fFolder.Put("out.json", kOld);
    Setting setting = With({"none", 1, 0, "0"}, fMarks.Path("fired"), isNamed);
    setting.fPrefix = {"prlimit", "--fsize=100000"};
    const Outcome outcome =
        RunPosutil({"convert", fFolder.Path("in.json"), fFolder.Path("out.json")}, "", setting);
    EXPECT_EQ(outcome, (Outcome{3, "", "posutil: cannot write the output: File too large\n"}));
    EXPECT_FALSE(IsNew());
    ExpectWhole();
  }
}

// What a run without memory may print: a message, and from the host that it cannot check the
// accounting. The C library ends a process that cannot register the destructor of a thread, or
// (without the TLS descriptors that only g++ makes) cannot get a thread its variables.
void ExpectMessageAboutMemory(const Outcome& outcome) {
  for (const char* const end : {"Fatal glibc error", "cannot allocate memory for thread-local"}) {
    if (outcome.fErr.starts_with(end)) return;
  }
  EXPECT_EQ(outcome.fStatus, 3);
  EXPECT_NE(outcome.fErr.find("posutil: "), std::string::npos) << outcome.fErr;
}

// The leak report of the host starts so, too.
void ExpectNoLeak(const Outcome& outcome) {
  const std::size_t host = outcome.fErr.find("KAP host: ");
  EXPECT_EQ(outcome.fErr.find("KAP host: no memory"), host) << outcome.fErr;
}

// Memory runs out at the nth allocation, for once or from then on. The steps grow with n, to keep
// the number of runs small.
TEST_F(FaultTest, OutOfMemory) {
  for (const long count : {1L, 1'000'000'000L}) {
    long n = 1;
    for (;; n += 1 + n / 8) {
      SCOPED_TRACE(std::to_string(n) + " of " + std::to_string(count));
      const Outcome outcome = Convert({"malloc", n, count, std::to_string(ENOMEM)});
      ExpectWhole();
      if (!HasFired()) break;
      ExpectNoLeak(outcome);
      EXPECT_EQ(IsNew(), outcome.fStatus == 0);
      if (outcome.fStatus != 0) ExpectMessageAboutMemory(outcome);
    }
    EXPECT_GT(n, 100);
  }
}

// A file of 5 GiB, without blocks on the disk, and 2 GiB of memory. JSON is read in pieces, so that
// its first character already ends the reading.
TEST_F(FaultTest, AFileLargerThanMemory) {
  const std::string in = fFolder.Put("in.json", "");
  std::filesystem::resize_file(in, 5ul << 30);
  const Setting limited = {.fPrefix = {"prlimit", "--as=2147483648"}};
  for (const std::string format : {"json", "text", "typea"}) {
    SCOPED_TRACE(format);
    const Outcome outcome = RunPosutil({"print", "--from", format, in}, "", limited);
    EXPECT_EQ(outcome.fOut, "");
    ExpectNoLeak(outcome);
    if (format != "json") {
      ExpectMessageAboutMemory(outcome);
      continue;
    }
    EXPECT_EQ(outcome.fStatus, 3);
    EXPECT_TRUE(outcome.fErr.starts_with(in + ":1:1: unexpected zero character")) << outcome.fErr;
  }
}

// A command that runs out of memory says so: it never gives a wrong answer.
TEST_F(FaultTest, CommandsOutOfMemory) {
  const std::string schema = KAP_SAMPLES "/people.txt";
  const std::string person = fFolder.Put(
      "person.txt", "< name (Ada Lovelace) born [10 December 1815] greeting `0041` factor 0.5 >");
  const std::vector<std::string> rows[] = {
      {"print", person},
      {"paths", person},
      {"get", person, "name", "born[1]", "born", "greeting"},
      {"set", person, "born[0]", "11"},
      {"remove", person, "born[0]"},
      {"merge", person, fFolder.Put("merge.json", R"({"born":null,"age":[1]})")},
      {"patch", person, fFolder.Put("patch.json", R"([{"op":"remove","path":"/born/0"}])")},
      {"diff", person, person},
      {"completion", "bash"},
      {"convert", person, "-", "--to", "typea"},
      {"validate", "--schema", schema, "--type", "Person", person},
      {"check-schema", "--format", "json", schema},
      {"version"}};
  for (const auto& row : rows) {
    const Outcome whole = RunPosutil(row);
    ASSERT_EQ(whole, (Outcome{0, whole.fOut, ""}));
    long n = 1;
    for (;; n += 1 + n / 8) {
      SCOPED_TRACE(row[0] + " " + std::to_string(n));
      std::filesystem::remove(fMarks.Path("fired"));
      const Fault fault = {"malloc", n, 1, std::to_string(ENOMEM)};
      const Outcome outcome = RunPosutil(row, "", With(fault, fMarks.Path("fired"), false));
      if (!HasFired()) break;
      ExpectNoLeak(outcome);
      if (outcome.fStatus == 0) {
        EXPECT_EQ(outcome.fOut, whole.fOut);
      } else {
        ExpectMessageAboutMemory(outcome);
      }
    }
    EXPECT_GT(n, 10) << row[0];
  }
}

}  // namespace
