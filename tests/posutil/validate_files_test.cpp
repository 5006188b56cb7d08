// SPDX-License-Identifier: MIT
// Validation of many files: folders, processes that share the work, and the progress.

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "Folder.h"
#include "Posutil.h"

namespace {

class ValidateFilesTest : public testing::Test {
 protected:
  ValidateFilesTest() {
    for (const char* const each : {"in", "in/b", "in/empty", "in/.hidden"}) {
      std::filesystem::create_directory(fFolder.Path(each));
    }
    fFolder.Put("in/schema.txt", "< P < category dict required < name string > > >");
    fFolder.Put("in/a.json", R"({"name":"Ada"})");
    fFolder.Put("in/b/torn.json", "{");
    fFolder.Put("in/b/wrong.txt", "< name 1 x 2 >");
    fFolder.Put("in/c.json", R"({"name":"Charles","x":true})");
    fFolder.Put("in/notes.md", "no document");
    fFolder.Put("in/.hidden/d.json", "{");
    fFolder.Put("in/.d.json", "{");
    std::filesystem::create_symlink(fFolder.Path("in"), fFolder.Path("in/circle"));
  }

  // Runs in the folder, so that messages have short paths.
  Outcome Validate(const std::vector<std::string>& arguments) const {
    const std::string script = "cd " + fFolder.Path("") + " && exec \"$0\" \"$@\"";
    return RunPosutil(Arguments(arguments), "", {.fPrefix = {"sh", "-c", script}});
  }
  static std::vector<std::string> Arguments(const std::vector<std::string>& more) {
    std::vector<std::string> all = {"validate", "--schema", "in/schema.txt", "--type", "P"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  const Folder fFolder;
};

const char kTorn[] =
    "in/b/torn.json:1:2: unexpected end of input; expected a string or '}'\n  {\n   ^\n";
const char kLoss[] = "in/c.json:1:23: warning: true is read as the string \"true\"\n";

TEST_F(ValidateFilesTest, Folders) {
  const struct {
    std::vector<std::string> arguments;
    Outcome outcome;
  } rows[] = {
      {{"in"}, {2, "", "posutil: in: is a folder; use --recursive\n"}},
      {{"-r", "-q", "in"}, {3, "", std::string(kTorn) + kLoss}},
      {{"--recursive", "--from", "json", "in"},
       {3,
        "in/c.json:1:19: Unknown member x\nin/schema.txt:1:3: note: the rule\n"
        "2 files checked: 1 valid, 1 not valid, 1 message; 1 file not checked\n",
        std::string(kTorn) + kLoss}},
      {{"-r", "in/a.json", "in/empty"},
       {3, "1 file checked: 1 valid, 0 not valid, 0 messages; 1 file not checked\n",
        "posutil: in/empty: no file of a known format\n"}},
      // A link that the user names is followed.
      {{"-rq", "in/circle/a.json"}, {0, "", ""}},
      // The schema is checked as a document only if it is named.
      {{"-rq", "in/schema.txt"}, {1, "", ""}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    EXPECT_EQ(Validate(row.arguments), row.outcome);
  }
}

// Whatever the number of processes, the output is that of one.
TEST_F(ValidateFilesTest, JobsChangeNothing) {
  for (int i = 0; i < 40; ++i) {
    fFolder.Put("in/b/" + std::to_string(i) + ".json",
                i % 3 == 0 ? R"({"name":1}{"x":2})" : R"({"name":"N"})");
  }
  const std::vector<std::string> rows[] = {
      {},          {"--max-errors", "3"}, {"--format", "json"}, {"--all", "--from", "json"},
      {"--quiet"}, {"--color=always"},    {"nowhere.json"},
  };
  for (std::vector<std::string> arguments : rows) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    arguments.insert(arguments.end(), {"--recursive", "in"});
    const Outcome alone = Validate(arguments);
    EXPECT_EQ(alone.fStatus, 3);
    // More processes than files are of no use, and one for each file takes long to start.
    for (const std::string jobs : {"0", "3", arguments.size() == 2 ? "1000" : "2"}) {
      std::vector<std::string> shared = arguments;
      shared.insert(shared.end(), {"--jobs", jobs});
      EXPECT_EQ(Validate(shared), alone) << jobs;
    }
  }
}

std::vector<pid_t> Children(pid_t process) {
  const std::string id = std::to_string(process);
  std::ifstream file("/proc/" + id + "/task/" + id + "/children");
  return {std::istream_iterator<pid_t>(file), {}};
}

// Waits until a process reads the pipe.
int OpenToWrite(const std::string& pipe) {
  for (;;) {
    const int descriptor = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor >= 0 || errno != ENXIO) return descriptor;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

// Each of two processes reads a pipe when it dies. Others check the rest.
TEST_F(ValidateFilesTest, ProcessesThatAreKilled) {
  const std::string pipes[] = {fFolder.Path("1.json"), fFolder.Path("2.json")};
  for (const std::string& pipe : pipes) ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const std::string noun : {"file", "document"}) {
    const std::string out = fFolder.Put("out", "");
    const int to = ::open(out.c_str(), O_RDWR | O_CLOEXEC);
    std::vector<std::string> arguments = {"validate", "--schema", fFolder.Path("in/schema.txt"),
                                          "--type",   "P",        "--jobs",
                                          "2",        pipes[0],   pipes[1]};
    arguments.insert(arguments.end(), 600, fFolder.Path("in/a.json"));
    if (noun == "document") arguments.emplace_back("--all");
    const Running running(arguments, {null, to, to});
    const int writers[] = {OpenToWrite(pipes[0]), OpenToWrite(pipes[1])};
    for (const pid_t child : Children(running.Process())) ::kill(child, SIGKILL);
    EXPECT_EQ(WEXITSTATUS(running.Wait()), 3);
    const std::string ended = ": the process that checked it has ended\n";
    EXPECT_EQ(fFolder.Content("out"),
              "posutil: " + pipes[0] + ended + "posutil: " + pipes[1] + ended + "600 " + noun +
                  "s checked: 600 valid, 0 not valid, 0 messages; 2 " + noun + "s not checked\n");
    for (const int descriptor : {to, writers[0], writers[1]}) ::close(descriptor);
  }
  ::close(null);
}

// It has checked its files. The name of its trace is that of its parent's and a number: too long.
TEST_F(ValidateFilesTest, AProcessThatFails) {
  const std::string trace(255, 't');
  const Outcome outcome =
      Validate({"--jobs", "2", "--trace", trace, "in/a.json", "in/a.json", "--format", "json"});
  EXPECT_EQ(outcome.fStatus, 3);
  EXPECT_TRUE(outcome.fOut.ends_with("\"valid\":2,\"invalid\":0,\"unchecked\":0,\"messages\":0}\n"))
      << outcome.fOut;
  EXPECT_TRUE(outcome.fErr.ends_with("\nposutil: a process that checked files has failed\n"))
      << outcome.fErr;
}

// Each process writes a whole trace of its own.
TEST_F(ValidateFilesTest, TraceOfWorkers) {
  Validate({"--jobs", "2", "-r", "-q", "--trace", "calls.json", "in"});
  const std::set<std::string> names = fFolder.Names();
  EXPECT_GE(names.size(), 3u);  // of the parent, of a worker at least, and the documents
  for (const std::string& name : names) {
    if (name == "in") continue;
    SCOPED_TRACE(name);
    const std::string trace = fFolder.Content(name);
    EXPECT_TRUE(trace.starts_with("[\n{\"name\": "));
    EXPECT_EQ(trace.find("\n]\n"), trace.size() - 3);
  }
}

// The results of the other files wait for it, and the other process waits before there are many.
TEST_F(ValidateFilesTest, ASlowFirstFile) {
  const std::string pipe = fFolder.Path("slow.json");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  const std::string out = fFolder.Put("out", "");
  const int to = ::open(out.c_str(), O_RDWR | O_CLOEXEC);
  std::vector<std::string> arguments = {
      "validate", "--schema", fFolder.Path("in/schema.txt"), "--type", "P", "--jobs", "2", pipe};
  arguments.insert(arguments.end(), 600, fFolder.Path("in/b/wrong.txt"));
  const Running running(arguments, {null, to, to});
  const int writer = OpenToWrite(pipe);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(::write(writer, "{}", 2), 2);
  ::close(writer);
  EXPECT_EQ(WEXITSTATUS(running.Wait()), 1);
  const std::string content = fFolder.Content("out");
  EXPECT_TRUE(content.starts_with(pipe + ":1:1: Missing required member name\n")) << content;
  EXPECT_TRUE(content.ends_with("601 files checked: 0 valid, 601 not valid, 1201 messages\n"));
  for (const int descriptor : {to, null}) ::close(descriptor);
}

TEST_F(ValidateFilesTest, TheReaderLeaves) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  ::close(ends[0]);
  const std::string in = fFolder.Path("in");
  for (const std::string jobs : {"1", "3"}) {
    EXPECT_EQ(RunPosutil({"validate", "--schema", in + "/schema.txt", "--type", "P", "-r",
                          "--from=text", "--jobs", jobs, in},
                         "", {.fOut = ends[1]}),
              (Outcome{-SIGPIPE, "", ""}));
  }
  // While the processes work.
  std::vector<std::string> arguments = Arguments({"--jobs", "3"});
  arguments[2] = in + "/schema.txt";
  arguments.insert(arguments.end(), 2000, in + "/b/wrong.txt");
  EXPECT_EQ(RunPosutil(arguments, "", {.fOut = ends[1]}), (Outcome{-SIGPIPE, "", ""}));
  ::close(ends[1]);
}

// More messages than a check keeps.
TEST_F(ValidateFilesTest, CountsEveryMessage) {
  fFolder.Put("list.txt", "< L < category array membertype int > >");
  std::string list = "[";
  for (int i = 0; i < 20'000; ++i) list += "(x) ";
  fFolder.Put("many.txt", list + "]");
  for (const auto& [limit, printed] : {std::pair("100", 100), std::pair("0", 20'000)}) {
    const Outcome outcome = RunPosutil({"validate", "--schema", fFolder.Path("list.txt"), "--type",
                                        "L", "--max-errors", limit, fFolder.Path("many.txt")});
    std::size_t found = 0;
    for (std::size_t at = 0; (at = outcome.fOut.find("; found ", at)) != std::string::npos; ++at) {
      ++found;
    }
    EXPECT_EQ(found, static_cast<std::size_t>(printed));
    EXPECT_TRUE(outcome.fOut.ends_with("1 file checked: 0 valid, 1 not valid, 20000 messages\n"));
  }
  std::vector<std::string> both = {"validate",
                                   "--schema",
                                   fFolder.Path("list.txt"),
                                   "--type",
                                   "L",
                                   "--max-errors",
                                   "0",
                                   fFolder.Path("many.txt"),
                                   fFolder.Path("many.txt")};
  const Outcome alone = RunPosutil(both);
  both.insert(both.end(), {"--jobs", "2"});
  EXPECT_TRUE(RunPosutil(both) == alone);
}

class ProgressTest : public ValidateFilesTest,
                     public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(ProgressTest, OnATerminal) {
  const auto [jobs, shown] = GetParam();
  const std::string pipe = fFolder.Path("pipe.json");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_TRUE(::grantpt(master) == 0 && ::unlockpt(master) == 0);
  const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  const Running running({"validate", "--schema", fFolder.Path("in/schema.txt"), "--type", "P",
                         "--jobs", jobs, fFolder.Path("in/a.json"), pipe},
                        {null, null, terminal}, {"TERM=xterm"});
  std::thread writer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));  // it appears after a second
    std::ofstream(pipe) << R"({"name":"Ada"})";
  });
  EXPECT_EQ(running.Wait(), 0);
  writer.join();
  ::close(terminal);
  char text[1000];
  const ssize_t size = ::read(master, text, sizeof text);
  EXPECT_EQ(std::string(text, static_cast<std::size_t>(std::max<ssize_t>(size, 0))),
            std::string("\r\033[K") + shown + "\r\033[K");
  for (const int descriptor : {master, null}) ::close(descriptor);
}

INSTANTIATE_TEST_SUITE_P(
    Jobs, ProgressTest,
    testing::Values(std::pair("1", "2/2 reading 0 MiB"),
                    std::pair("2", "checking [########################################] 100 %")));

}  // namespace
