// SPDX-License-Identifier: MIT
// Lost output, and colours.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "Folder.h"
#include "Posutil.h"

namespace {

TEST(OutputTest, AFullDeviceIsAnError) {
  const int full = ::open("/dev/full", O_WRONLY);
  const Outcome expected = {3, "", "posutil: cannot write the output: No space left on device\n"};
  EXPECT_EQ(RunPosutil({"print", "--from", "text", "-"}, "1", {.fOut = full}), expected);
  EXPECT_EQ(RunPosutil({"print", "--from", "text", "--to", "typea", "-"}, "1", {.fOut = full}),
            expected);
  EXPECT_EQ(RunPosutil({"version"}, "", {.fOut = full}), expected);
  EXPECT_EQ(RunPosutil({"--help"}, "", {.fOut = full}), expected);
  ::close(full);
}

TEST(OutputTest, AClosedPipeEndsTheProgramAsItsSignalDoes) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  ::close(ends[0]);
  EXPECT_EQ(RunPosutil({"print", "--from", "text", "-"}, "1", {.fOut = ends[1]}),
            (Outcome{-SIGPIPE, "", ""}));
  // While it waits for more input.
  EXPECT_EQ(
      RunPosutil({"print", "--all", "--from", "json", "--to", "json", "-"}, "1 2",
                 {.fOut = ends[1], .fPrefix = {"sh", "-c", "(cat; sleep 1) | \"$0\" \"$@\""}}),
      (Outcome{128 + SIGPIPE, "", ""}));
  // Long enough to fail inside a call of the library.
  const std::string longText = "[\"" + std::string(200000, 'x') + "\"]";
  EXPECT_EQ(
      RunPosutil({"print", "--from", "json", "--to", "typea", "-"}, longText, {.fOut = ends[1]}),
      (Outcome{-SIGPIPE, "", ""}));
  // A parent that ignores the signal wants an exit status.
  EXPECT_EQ(
      RunPosutil({"print", "--from", "text", "-"}, "1",
                 {.fOut = ends[1], .fPrefix = {"sh", "-c", "trap '' PIPE; exec \"$0\" \"$@\""}}),
      (Outcome{3, "", ""}));
  ::close(ends[1]);
}

// The other end may have made the pipe so.
TEST(OutputTest, ANonBlockingPipeIsWaitedFor) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
  std::size_t total = 0;
  std::thread reader([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // until the pipe is full
    char part[4096];
    for (ssize_t size; (size = ::read(ends[0], part, sizeof part)) > 0;) {
      total += static_cast<std::size_t>(size);
    }
  });
  const std::string text = "\"" + std::string(500'000, 'x') + "\"";
  EXPECT_EQ(RunPosutil({"print", "--from", "json", "--to", "json", "-"}, text, {.fOut = ends[1]}),
            (Outcome{0, "", ""}));
  ::close(ends[1]);
  reader.join();
  ::close(ends[0]);
  EXPECT_EQ(total, text.size() + 1);
}

// No file that the program opens takes their place.
TEST(OutputTest, ClosedStandardDescriptors) {
  const Folder folder;
  const std::string in = folder.Put("in.json", "[1]");
  const std::string out = folder.Path("out.json");
  const Setting closed = {.fPrefix = {"sh", "-c", "exec \"$0\" \"$@\" <&- >&- 2>&-"}};
  const struct {
    std::vector<std::string> arguments;
    int status;
  } rows[] = {{{"convert", in, out}, 0},
              {{"convert", "--from", "json", "-", out}, 3},
              {{"convert", "--to", "json", in, "/dev/stdout"}, 3},
              {{"convert", in, folder.Path("nowhere/out.json")}, 3},
              {{"print", in}, 3}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    EXPECT_EQ(RunPosutil(row.arguments, "", closed), (Outcome{row.status, "", ""}));
    EXPECT_EQ(folder.Content("out.json"), "[\n  1\n]\n");
    EXPECT_EQ(folder.Names(), (std::set<std::string>{"in.json", "out.json"}));
  }
}

TEST(OutputTest, LongOutputIsWhole) {
  // More lines, and a longer string, than the buffer holds.
  const std::string longText(200000, 'x');
  std::string json = "[";
  std::string expected = "[\n";
  for (int i = 0; i < 50000; ++i) {
    json += std::to_string(i) + ",";
    expected += "  " + std::to_string(i) + ",\n";
  }
  // The input is a file, then a pipe, whose size is unknown.
  for (const std::vector<std::string>& prefix :
       {std::vector<std::string>(), {"sh", "-c", "cat | exec \"$0\" \"$@\""}}) {
    EXPECT_TRUE(RunPosutil({"print", "--from", "json", "--to", "json", "-"},
                           json + "\"" + longText + "\"]", {.fPrefix = prefix}) ==
                (Outcome{0, expected + "  \"" + longText + "\"\n]\n", ""}));
  }
}

// The output of the program on a terminal.
std::string OnTerminal(const std::vector<std::string>& environment,
                       const std::vector<std::string>& prefix = {}) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (::grantpt(master) != 0 || ::unlockpt(master) != 0) return "no terminal";
  const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  const Outcome outcome =
      RunPosutil({"print", "--from", "text", "-"}, "<a 1>",
                 {.fOut = terminal, .fPrefix = prefix, .fEnvironment = environment});
  EXPECT_EQ(outcome.fStatus, 0) << outcome.fErr;
  char text[1000];
  const ssize_t size = ::read(master, text, sizeof text);
  ::close(terminal);
  ::close(master);
  return {text, static_cast<std::size_t>(size > 0 ? size : 0)};
}

TEST(ColourTest, OnlyOnATerminalThatWantsThem) {
  const std::string plain = "dictionary\r\na: 1\r\n";
  EXPECT_EQ(OnTerminal({"TERM=xterm", "NO_COLOR="}),
            "\033[2mdictionary\033[0m\r\n\033[34ma\033[0m: \033[36m1\033[0m\r\n");
  EXPECT_EQ(OnTerminal({"TERM=xterm", "NO_COLOR=1"}), plain);
  EXPECT_EQ(OnTerminal({"TERM=dumb", "NO_COLOR="}), plain);
  EXPECT_EQ(OnTerminal({"NO_COLOR="}, {"env", "-u", "TERM"}), plain);
}

TEST(ColourTest, TheOptionOverridesTheEnvironment) {
  const std::string document = "<a (b c) d [-1 `0041`] e <> >";
  const struct {
    std::string to;
    std::string coloured;
  } rows[] = {
      {"json",
       "{\033[34m\"a\"\033[0m:\033[32m\"b c\"\033[0m,\033[34m\"d\"\033[0m:[\033[36m-1\033[0m,{"
       "\033[34m\"$unicode\"\033[0m:\033[32m\"A\"\033[0m}],\033[34m\"e\"\033[0m:{}}\n"},
      {"text",
       "< \033[34ma\033[0m \033[32m(b c)\033[0m \033[34md\033[0m [\033[36m-1\033[0m "
       "\033[32m`0041`\033[0m] \033[34me\033[0m < > >\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.to);
    const auto print = [&](const std::string& mode) {
      return RunPosutil({"print", "--compact", "--from=text", "--to", row.to, mode, "-"}, document,
                        {.fEnvironment = {"NO_COLOR=1", "TERM=xterm"}});
    };
    EXPECT_EQ(print("--color=always"), (Outcome{0, row.coloured, ""}));
    const Outcome plain = print("--color=auto");
    EXPECT_EQ(plain.fOut.find('\033'), std::string::npos);
    EXPECT_EQ(print("--color=never"), plain);
  }
}

TEST(ColourTest, Messages) {
  const struct {
    std::vector<std::string> arguments;
    std::string input;
    std::string message;
  } rows[] = {
      {{"print", "--from=json", "-"},
       "[1,\n x]",
       "\033[1;31m<stdin>:2:2: unexpected 'x'; expected a value (at [1])\033[0m\n"
       "   x]\n\033[1;32m   ^\033[0m\n"},
      {{"print", "--from=json", "--to=json", "-"},
       "[true, 1e-400]",
       "\033[1;35m<stdin>:1:2: warning: true is read as the string \"true\"\033[0m\n"
       "\033[1;35m<stdin>:1:8: warning: the number 1e-400 is read as 0\033[0m\n"},
      {{"--color=always", "prnt"},
       "",
       "\033[1;31mposutil: unknown command \"prnt\"; did you mean print?\033[0m\n"
       "See posutil --help.\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    std::vector<std::string> arguments = row.arguments;
    if (arguments.front() == "print") arguments.push_back("--color=always");
    EXPECT_EQ(RunPosutil(arguments, row.input).fErr, row.message);
  }
}

TEST(LayoutTest, LinesAndIndentation) {
  const std::string document = "<a [1 2] b <> >";
  const struct {
    std::vector<std::string> options;
    std::string out;
  } rows[] = {
      {{"--to=json", "--compact"}, "{\"a\":[1,2],\"b\":{}}\n"},
      {{"--to=json", "--indent=2"}, "{\n  \"a\": [\n    1,\n    2\n  ],\n  \"b\": {}\n}\n"},
      {{"--to=json", "--indent", "tab"}, "{\n\t\"a\": [\n\t\t1,\n\t\t2\n\t],\n\t\"b\": {}\n}\n"},
      {{"--to=json", "--indent=0"}, "{\n\"a\": [\n1,\n2\n],\n\"b\": {}\n}\n"},
      {{"--to=text", "-c"}, "< a [1 2] b < > >\n"},
      {{"--to=text", "--indent=1"}, "<\n a [\n  1\n  2\n ]\n b < >\n>\n"},
      {{"--indent=4"}, "dictionary\na: array of 2\n    [0]: 1\n    [1]: 2\nb: dictionary\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.options));
    std::vector<std::string> arguments = {"print", "--from=text", "-"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    EXPECT_EQ(RunPosutil(arguments, document), (Outcome{0, row.out, ""}));
  }
  // With an indentation, documents of a stream take several lines each.
  EXPECT_EQ(RunPosutil({"print", "--all", "--from=json", "--to=json", "--indent=1", "-"}, "[1][2]"),
            (Outcome{0, "[\n 1\n]\n[\n 2\n]\n", ""}));
}

TEST(LayoutTest, FormatsWithoutTheLayout) {
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"--to=typea", "--compact"}, "--compact: the format typea has no such layout"},
      {{"--to=typea", "--indent=2"}, "--indent: the format typea has no such layout"},
      {{"--compact"}, "--compact: the format tree has no such layout"}};
  for (const auto& [options, message] : rows) {
    std::vector<std::string> arguments = {"print", "--from=text", "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(RunPosutil(arguments, "[]"), (Outcome{2, "", "posutil: " + message + "\n"}));
  }
}

}  // namespace
