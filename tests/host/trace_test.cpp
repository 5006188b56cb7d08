// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <thread>

#include "LeaveProcess.h"
#include "TestHost.h"

// What the trace shows of calls, as text and as trace events.

namespace {

using namespace KAP_T_MT;
using KAPHost::DebugOptions;
using KAPHost::Host;
using KAPHost::HostOptions;

struct EchoInterface
    : TKAPInterface<"EchoInterface",
                    TKAPMethod<"Echo", "EchoProc", KAPStringAtom*(KAPStringAtom* text, int depth)>,
                    TKAPMethod<"Fail", "FailProc", KAPError*(double* out)>,
                    TKAPMethod<"Throw", "ThrowProc", void(), kKAPThrows>> {};
using EchoSet = TKAPInterfaceSet<EchoInterface>;

std::string Contents(const std::string& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

// A file that is gone at the end.
class TraceFile {
 public:
  explicit TraceFile(const char* suffix)
      : fPath(::testing::TempDir() + "trace_test." + std::to_string(::getpid()) + suffix) {}
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;
  ~TraceFile() { std::remove(fPath.c_str()); }
  const std::string& Path() const { return fPath; }

 private:
  const std::string fPath;
};

Host* gHost = nullptr;

KAPStringAtom* Echo(KAPStringAtom* text, int depth) noexcept {
  if (depth != 0) return gHost->Proc<EchoInterface, "Echo">()(text, depth - 1);
  gHost->Proc<KAPStringInterface, "AddRef">()(text);
  return text;
}
KAPError* Fail(double* out) noexcept {
  *out = 0;
  return gHost->Proc<KAPErrorInterface, "NewError">()("no echo", "test", 3, nullptr, nullptr);
}
void Throw() { throw 5; }

// Makes a host that traces to `path`, lets `act` use it, and ends it.
template <class Act>
void Traced(DebugOptions debug, const std::string& path, Act act, bool checks = false) {
  debug.fTrace = path;
  debug.fDeclared = KAPHost::Declare<EchoSet>();
  Host host({.fOnReport = {},
             .fOnLeak = [](const auto& held) { ADD_FAILURE() << held; },
             .fChecks = checks,
             .fDebug = debug});
  gHost = &host;
  host.RegisterInterface<EchoInterface>(&Echo, &Fail, &Throw);
  act(host);
  EXPECT_EQ(host.TakeReports(), std::vector<std::string>());
  gHost = nullptr;
}

// The lines of a trace without times and thread, the calls of registration left out.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::stringstream stream(text);
  const std::regex time(R"(^ *[0-9.]+ ms  [0-9]+  | \([0-9.]+ us\)$)");
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(std::regex_replace(line, time, ""));
  }
  return lines;
}

void UseEcho(Host& host) {
  KAPStringAtom* const atom = host.Proc<KAPStringInterface, "NewStringAtom">()("so");
  KAPStringAtom* const echo = host.Proc<EchoInterface, "Echo">()(atom, 1);
  host.Proc<KAPStringInterface, "DeleteStringAtom">()(echo);
  host.Proc<KAPStringInterface, "DeleteStringAtom">()(atom);
  double result = 0;
  host.Proc<KAPErrorInterface, "Release">()(host.Proc<EchoInterface, "Fail">()(&result));
  KAPContainer* stream = nullptr;
  host.Proc<KAPStreamFactoryInterface, "NewPositionableMemoryStream">()(&stream);
  host.Proc<KAPContainerInterface, "Release">()(stream);
  EXPECT_THROW((host.Proc<EchoInterface, "Throw">()()), int);
}

// Checks change nothing where nothing is wrong.
class TextTraceTest : public ::testing::TestWithParam<bool> {};

TEST_P(TextTraceTest, Lines) {
  const TraceFile file(".txt");
  Traced({}, file.Path(), UseEcho, GetParam());
  const std::string host = "host_test > host: ";
  const std::string echo = "host_test > host_test: EchoInterface.";
  EXPECT_EQ(
      Lines(Contents(file.Path())),
      (std::vector<std::string>{
          host + R"(KAPStringInterface.NewStringAtom("so") = "so")",
          echo + R"(Echo("so", 1) {)",
          "  " + echo + R"(Echo("so", 0) {)",
          "    " + host + R"(KAPStringInterface.AddRef("so"))",
          R"(  } Echo = "so")",
          R"(} Echo = "so")",
          host + R"(KAPStringInterface.DeleteStringAtom("so"))",
          host + R"(KAPStringInterface.DeleteStringAtom("so"))",
          echo + "Fail() {",
          "  " + host +
              R"(KAPErrorInterface.NewError("no echo", "test", 3, null, null) = error "no echo")",
          R"(} Fail = error "no echo")",
          host + R"(KAPErrorInterface.Release(error "no echo"))",
          host + "KAPStreamFactoryInterface.NewPositionableMemoryStream() = ok -> container "
                 "\"KAPHostPositionableStream\"",
          host + R"(KAPContainerInterface.Release(container "KAPHostPositionableStream"))",
          echo + "Throw() = an exception",
      }));
}

INSTANTIATE_TEST_SUITE_P(Trace, TextTraceTest, ::testing::Bool());

struct PlacesInterface
    : TKAPInterface<"PlacesInterface", TKAPMethod<"Real", "RealProc", KAPError*(float* out)>,
                    TKAPMethod<"Int", "IntProc", KAPError*(int* out)>,
                    TKAPMethod<"Short", "ShortProc", KAPError*(short* out)>,
                    TKAPMethod<"Char", "CharProc", KAPError*(signed char* out)>> {};

template <class Type>
KAPError* Place(Type* out) noexcept {
  if (out) *out = static_cast<Type>(-1.5);
  return nullptr;
}

// A result is read with the size of its place.
TEST(TraceTest, ResultPlaces) {
  const TraceFile file(".txt");
  {
    HostOptions options;
    options.fDebug.fTrace = file.Path();
    options.fDebug.fDeclared = KAPHost::Declare<TKAPInterfaceSet<PlacesInterface>>();
    Host host(options);
    host.RegisterInterface<PlacesInterface>(&Place<float>, &Place<int>, &Place<short>,
                                            &Place<signed char>);
    struct {
      float fReal;
      int fInt;
      short fShort;
      signed char fChar;
    } places{};
    host.Proc<PlacesInterface, "Real">()(&places.fReal);
    host.Proc<PlacesInterface, "Int">()(&places.fInt);
    host.Proc<PlacesInterface, "Short">()(&places.fShort);
    host.Proc<PlacesInterface, "Char">()(&places.fChar);
    host.Proc<PlacesInterface, "Int">()(nullptr);
    host.Proc<KAPErrorInterface, "Release">()(
        host.Proc<KAPErrorInterface, "NewError">()(nullptr, "c", 3, nullptr, nullptr));
  }
  const std::string call = "host_test > host_test: PlacesInterface.";
  EXPECT_EQ(Lines(Contents(file.Path())),
            (std::vector<std::string>{
                call + "Real() = ok -> -1.5", call + "Int() = ok -> -1",
                call + "Short() = ok -> -1", call + "Char() = ok -> -1", call + "Int(null) = ok",
                "host_test > host: KAPErrorInterface.NewError(null, \"c\", 3, null, null) = "
                "error \"\"",
                "host_test > host: KAPErrorInterface.Release(error \"\")"}));
}

// Each event has what the trace event format requires of a complete event.
void CheckEvent(const nlohmann::json& event) {
  EXPECT_TRUE(event.at("name").is_string());
  EXPECT_EQ(event.at("ph"), "X");
  EXPECT_TRUE(event.at("ts").is_number() && event.at("ts") >= 0);
  EXPECT_TRUE(event.at("dur").is_number() && event.at("dur") >= 0);
  EXPECT_EQ(event.at("pid"), ::getpid());
  EXPECT_TRUE(event.at("tid").is_number_unsigned());
  for (const char* key : {"caller", "component", "arguments"}) {
    EXPECT_TRUE(event.at("args").at(key).is_string()) << key;
  }
  EXPECT_TRUE(event.at("args").at("depth").is_number_unsigned());
}

TEST(TraceTest, Json) {
  const TraceFile file(".json");
  Traced({}, file.Path(), [](Host& host) {
    KAPStringAtom* const odd = host.Proc<KAPStringInterface, "NewStringAtom">()("\"\\\n\x80");
    host.Proc<KAPStringInterface, "DeleteStringAtom">()(odd);
    UseEcho(host);
  });
  const auto events = nlohmann::json::parse(Contents(file.Path()));
  ASSERT_EQ(events.size(), 14u);
  for (const auto& event : events) CheckEvent(event);
  EXPECT_EQ(events[0]["args"]["arguments"], R"("\"\\\n\x80")");
  const auto& inner = events[3];  // ends before the calls around it
  EXPECT_EQ(inner["name"], "KAPStringInterface.AddRef");
  EXPECT_EQ(inner["args"]["depth"], 2);
  const auto& outer = events[5];
  EXPECT_EQ(outer["name"], "EchoInterface.Echo");
  EXPECT_LE(outer["ts"], inner["ts"]);
  EXPECT_GE(outer["ts"].get<double>() + outer["dur"].get<double>() + 0.002,
            inner["ts"].get<double>() + inner["dur"].get<double>());
  EXPECT_EQ(events[9]["args"]["error"], "no echo");
}

// Bytes that are not UTF-8, wherever they come from, are shown as in the arguments.
TEST(TraceTest, JsonOfOddBytes) {
  const struct {
    const char* bytes;
    const char* shown;
  } rows[] = {{"\xe9t\xe9", "\\xe9t\\xe9"},
              {"\xc3\xa9", "\xc3\xa9"},
              {"\xc3", "\\xc3"},
              {"\xed\xa0\x80", "\\xed\\xa0\\x80"},
              {"\xf0\x9f\x98\x80\t", "\xf0\x9f\x98\x80\t"},
              {"\xc0\xaf", "\\xc0\\xaf"},
              {"\xc3\xc3", "\\xc3\\xc3"},
              {"\xe0\xa0\x80", "\xe0\xa0\x80"},
              {"\xe0\x9f\xbf", "\\xe0\\x9f\\xbf"},
              {"\xed\x9f\xbf", "\xed\x9f\xbf"},
              {"\xf0\x8f\xbf\xbf", "\\xf0\\x8f\\xbf\\xbf"},
              {"\xf4\x8f\xbf\xbf", "\xf4\x8f\xbf\xbf"},
              {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
              {"\xf5\x80\x80\x80", "\\xf5\\x80\\x80\\x80"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.shown);
    const TraceFile file(".json");
    Traced({}, file.Path(), [&](Host& host) {
      host.Register(row.bytes, "Nothing", "NothingProc", reinterpret_cast<void*>(&Throw));
      host.Proc<KAPErrorInterface, "Release">()(
          host.Proc<KAPErrorInterface, "NewError">()(row.bytes, "test", 3, nullptr, nullptr));
    });
    const auto events = nlohmann::json::parse(Contents(file.Path()));
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[0]["ph"], "i");
    EXPECT_GE(events[0]["ts"], 0);
    EXPECT_EQ(events[0]["args"]["text"],
              row.shown + std::string(".Nothing is not declared: its calls are not traced"));
    EXPECT_EQ(events[1]["args"]["error"], row.shown);
  }
}

// A further host of a process appends to the file; a child writes one of its own.
TEST(TraceTest, HostsAndProcesses) {
  for (const char* suffix : {".json", ".txt", ".%p.txt"}) {
    SCOPED_TRACE(suffix);
    const TraceFile file(suffix);
    pid_t child = 0;
    Traced({}, file.Path(), UseEcho);
    Traced({}, file.Path(), [&](Host& host) {
      child = ::fork();
      UseEcho(host);
    });
    if (child == 0) LeaveProcess(::testing::Test::HasFailure());
    int status = 1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    const bool isJson = std::string_view(suffix) == ".json";
    const auto pathOf = [&](pid_t process) {
      std::string path = file.Path();
      const std::string number = std::to_string(process);
      if (const auto at = path.find("%p"); at != std::string::npos)
        return path.replace(at, 2, number);
      if (process == ::getpid()) return path;
      return isJson ? path.insert(path.size() - 5, '.' + number) : path + '.' + number;
    };
    const std::pair<pid_t, std::size_t> rows[] = {{::getpid(), 2}, {child, 1}};
    for (const auto& [process, hosts] : rows) {
      const std::string text = Contents(pathOf(process));
      EXPECT_EQ(isJson ? nlohmann::json::parse(text).size() : Lines(text).size(),
                hosts * (isJson ? 12 : 15));
      std::remove(pathOf(process).c_str());
    }
  }
}

// What cannot be written ends the trace or the list, not the process, and the program learns of it
// once.
TEST(TraceTest, LostOutput) {
  const TraceFile pipe(".fifo");
  ASSERT_EQ(::mkfifo(pipe.Path().c_str(), 0600), 0);
  const struct {
    std::string trace;
    std::string leaks;
    std::string message;
  } rows[] = {{pipe.Path(), "", "Broken pipe"},
              {"/dev/full", "", "No space left on device"},
              {"", "/dev/full", "No space left on device"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.trace + row.leaks);
    std::vector<std::string> lost;
    int reader = row.trace == pipe.Path() ? ::open(row.trace.c_str(), O_RDONLY | O_NONBLOCK) : -1;
    KAPStringAtom* atom = nullptr;
    {
      HostOptions options{.fOnReport = {}, .fOnLeak = [](const auto&) {}};
      options.fDebug.fTrace = row.trace;
      options.fDebug.fLeaks = row.leaks;
      options.fDebug.fOnLost = [&](const std::string& message) { lost.push_back(message); };
      const Host host(options);
      ::close(reader);
      atom = host.Proc<KAPStringInterface, "NewStringAtom">()("held");
    }
    const Host host;
    host.Proc<KAPStringInterface, "DeleteStringAtom">()(atom);
    EXPECT_EQ(lost, std::vector<std::string>{"cannot write \"" + row.trace + row.leaks +
                                             "\": " + row.message + "; the rest is lost"});
  }
}

TEST(TraceTest, Filters) {
  const struct {
    const char* why;
    std::vector<std::string> interfaces;
    std::vector<std::string> components;
    std::size_t calls;
  } rows[] = {{"everything", {}, {}, 12},
              {"one interface", {"EchoInterface"}, {}, 4},
              {"two interfaces", {"EchoInterface", "KAPErrorInterface"}, {}, 6},
              {"what the host receives", {}, {"host"}, 8},
              {"both have to fit", {"EchoInterface"}, {"host"}, 0},
              {"unknown component", {}, {"Nobody"}, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    const TraceFile file(".json");
    DebugOptions debug;
    debug.fInterfaces = row.interfaces;
    debug.fComponents = row.components;
    Traced(debug, file.Path(), UseEcho);
    EXPECT_EQ(nlohmann::json::parse(Contents(file.Path())).size(), row.calls);
  }
}

// The trace names what a component registers without a declaration; a method of streams under the
// component's own name is known all the same; and an address that was looked up is not wrapped
// again.
TEST(TraceTest, Registrations) {
  const TraceFile file(".txt");
  Traced({}, file.Path(), [](Host& host) {
    host.Register("Unknown", "Method", "Proc", reinterpret_cast<void*>(&Throw));
    EXPECT_EQ(host.Find("Unknown", "Method", "Proc"), reinterpret_cast<void*>(&Throw));
    host.Register("MyStream", "Rewind", "KAPRewindableStreamRewindProc",
                  reinterpret_cast<void*>(+[](KAPContainer*) -> KAPError* { return nullptr; }));
    void* const rewind = host.Find("MyStream", "Rewind", "KAPRewindableStreamRewindProc");
    host.Register("Again", "Rewind", "KAPRewindableStreamRewindProc", rewind);
    EXPECT_EQ(host.Find("Again", "Rewind", "KAPRewindableStreamRewindProc"), rewind);
    EXPECT_EQ(reinterpret_cast<KAPError* (*)(KAPContainer*)>(rewind)(nullptr), nullptr);
  });
  EXPECT_EQ(Lines(Contents(file.Path())),
            (std::vector<std::string>{"# Unknown.Method is not declared: its calls are not traced",
                                      "host_test > host_test: MyStream.Rewind(null) = ok"}));
}

// Nine components that implement one method: the ninth is not observed, and all of them work.
TEST(TraceTest, MoreProceduresThanVariants) {
  const TraceFile file(".txt");
  constexpr const char* kProc = "KAPRewindableStreamRewindProc";
  const std::string names[] = {"A", "B", "C", "D", "E", "F", "G", "H", "I"};
  Traced({}, file.Path(), [&](Host& host) {
    const auto rewind = +[](KAPContainer*) -> KAPError* { return nullptr; };
    for (const std::string& name : names) {
      host.Register(name.c_str(), "Rewind", kProc, reinterpret_cast<void*>(rewind));
    }
    for (const std::string& name : names) {
      const auto found = host.Find(name.c_str(), "Rewind", kProc);
      EXPECT_EQ(reinterpret_cast<KAPError* (*)(KAPContainer*)>(found)(nullptr), nullptr) << name;
    }
  });
  const std::vector<std::string> lines = Lines(Contents(file.Path()));
  const auto isNote = [](const std::string& line) {
    return line.find("Rewind has too many procedures") != std::string::npos;
  };
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isNote), 3);  // two are the host's own
  // Without a trace, the checks report it.
  Host host({.fOnReport = {}, .fOnLeak = {}, .fChecks = true});
  for (const std::string& name : names) {
    host.Register(name.c_str(), "Rewind", kProc, &host);
  }
  const std::vector<std::string> reports = host.TakeReports();
  ASSERT_EQ(reports.size(), 3u);
  EXPECT_EQ(reports[2], "KAP host: I.Rewind has too many procedures: its calls are not checked");
}

// Equal names of a method and its procedure say nothing about another interface's arguments.
TEST(TraceTest, UndeclaredInterfaceIsNotObserved) {
  const TraceFile file(".txt");
  Traced({}, file.Path(), [](Host& host) {
    const auto twice = +[](double value) { return 2 * value; };
    host.Register("Other", "Echo", "EchoProc", reinterpret_cast<void*>(twice));
    const auto found = reinterpret_cast<double (*)(double)>(host.Find("Other", "Echo", "EchoProc"));
    EXPECT_EQ(found(2.5), 5);
  });
  EXPECT_EQ(Lines(Contents(file.Path())),
            std::vector<std::string>{"# Other.Echo is not declared: its calls are not traced"});
}

// Lines of several threads do not mix: each line of the text is one of the expected ones.
TEST(TraceTest, Threads) {
  const TraceFile file(".txt");
  Traced({}, file.Path(), [](Host& host) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&host] {
        for (int j = 0; j < 200; ++j) {
          KAPStringAtom* const atom = host.Proc<KAPStringInterface, "NewStringAtom">()("x");
          KAPStringAtom* const echo = host.Proc<EchoInterface, "Echo">()(atom, 0);
          host.Proc<KAPStringInterface, "DeleteStringAtom">()(echo);
          host.Proc<KAPStringInterface, "DeleteStringAtom">()(atom);
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  });
  const std::regex line(
      R"(( *)((host_test > host(_test)?: \w+\.\w+\("x"(, 0)?\)( = "x"| \{( \.\.\.)?)?))"
      R"(|\} \w+( = "x")?))");
  const std::vector<std::string> lines = Lines(Contents(file.Path()));
  for (const std::string& text : lines) EXPECT_TRUE(std::regex_match(text, line)) << text;
  const auto isCall = [](const std::string& text) { return text.find(" > ") != std::string::npos; };
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isCall), 4 * 200 * 5);
}

// Off is off: the host hands out its procedures as they are registered.
TEST(TraceTest, Off) {
  TestHost host;
  host.RegisterInterface<EchoInterface>(&Echo, &Fail, &Throw);
  EXPECT_EQ((host.Proc<EchoInterface, "Throw">()), &Throw);
  EXPECT_TRUE(host.LiveThings().empty());
  EXPECT_EQ(host.LastThing(), 0u);
}

TEST(TraceTest, UnwritableFile) {
  EXPECT_THROW(
      {
        DebugOptions debug;
        debug.fTrace = "/no/such/folder/trace";
        const Host host({.fOnReport = {}, .fOnLeak = {}, .fDebug = debug});
      },
      std::runtime_error);
  const TestHost another;  // the process is free for one
}

TEST(DebugWordsTest, Words) {
  const struct {
    const char* words;
    const char* trace;
    std::vector<std::string> interfaces;
    bool stacks;
    bool checks;
    const char* leaks;
    const char* message;  // the start of it
  } rows[] = {
      {"", "", {}, false, false, "", ""},
      {"trace", "-", {}, false, false, "", ""},
      {"trace=a=b.json,stacks", "a=b.json", {}, true, false, "", ""},
      {"interface=A,interface=B,,checks,", "", {"A", "B"}, false, true, "", ""},
      {"leaks=file", "", {}, false, false, "file", ""},
      {"stack", "", {}, false, false, "", "\"stack\" is not a word of KAPHOST_DEBUG; the words"},
      {"stacks,trace=", "", {}, false, false, "", "\"trace=\" lacks a value; the words"},
      {"interface", "", {}, false, false, "", "\"interface\" lacks a value; the words"},
      {"checks=1", "", {}, false, false, "", "\"checks=1\" takes no value; the words"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.words);
    DebugOptions options;
    bool checks = false;
    std::string message;
    try {
      ParseDebugWords(row.words, options, checks);
    } catch (const std::invalid_argument& error) {
      message = error.what();
    }
    EXPECT_EQ(options.fTrace, row.trace);
    EXPECT_EQ(options.fInterfaces, row.interfaces);
    EXPECT_EQ(options.fStacks, row.stacks);
    EXPECT_EQ(checks, row.checks);
    EXPECT_EQ(options.fLeaks, row.leaks);
    EXPECT_TRUE(message.starts_with(row.message)) << message;
    EXPECT_EQ(message.empty(), *row.message == '\0') << message;
  }
}

// Checks that the environment turns on report to standard error: the program expects no reports.
TEST(DebugWordsTest, ChecksOfTheEnvironment) {
  ::setenv("KAPHOST_DEBUG", "checks", 1);
  ::testing::internal::CaptureStderr();
  {
    Host host;
    KAPStringAtom* const atom = host.Proc<KAPStringInterface, "NewStringAtom">()("gone");
    for (int i = 0; i < 2; ++i) host.Proc<KAPStringInterface, "DeleteStringAtom">()(atom);
  }
  ::unsetenv("KAPHOST_DEBUG");
  const std::string error = ::testing::internal::GetCapturedStderr();
  EXPECT_TRUE(error.starts_with("KAP host: release of a dead atom \"gone\"\n")) << error;
}

// A wrong word of the environment harms nothing but itself, and the program keeps its own trace.
TEST(DebugWordsTest, Environment) {
  const TraceFile file(".txt");
  const TraceFile own(".own");
  HostOptions options;
  options.fDebug.fTrace = own.Path();
  const struct {
    std::string words;
    const char* error;
    bool isTraced;
    bool isOwnTraced;
  } rows[] = {
      {"trace=" + file.Path(), "", true, false},
      {"trcae", "KAP host: \"trcae\" is not a word of KAPHOST_DEBUG", false, true},
      {"trace=/no/such/folder/x", "KAP host: cannot write \"/no/such/folder/x\"", false, true},
      {"leaks=/no/such/folder/x", "KAP host: cannot write \"/no/such/folder/x\"", false, true},
      {"trace=/dev/full", "KAP host: cannot write \"/dev/full\": No space left on device; the rest",
       false, false},
      {"help", "the words of KAPHOST_DEBUG", false, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.words);
    std::remove(file.Path().c_str());
    std::remove(own.Path().c_str());
    ::setenv("KAPHOST_DEBUG", row.words.c_str(), 1);
    ::testing::internal::CaptureStderr();
    {
      const Host host(options);
      host.Proc<KAPErrorInterface, "GetCoreError">()(0);
    }
    ::unsetenv("KAPHOST_DEBUG");
    const std::string error = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(error.substr(0, std::string_view(row.error).size()), row.error);
    EXPECT_EQ(error.empty(), std::string_view(row.error).empty()) << error;
    EXPECT_EQ(Contents(file.Path()).find("GetCoreError") != std::string::npos, row.isTraced);
    EXPECT_EQ(Contents(own.Path()).find("GetCoreError") != std::string::npos, row.isOwnTraced);
  }
}

}  // namespace
