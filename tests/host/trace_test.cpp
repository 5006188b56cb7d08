// SPDX-License-Identifier: MIT
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <thread>

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
void Traced(DebugOptions debug, const std::string& path, Act act) {
  debug.fTrace = path;
  debug.fDeclared = KAPHost::Declare<EchoSet>();
  Host host({.fOnReport = {},
             .fOnLeak = [](const auto& held) { ADD_FAILURE() << held; },
             .fDebug = debug});
  gHost = &host;
  host.RegisterInterface<EchoInterface>(&Echo, &Fail, &Throw);
  act(host);
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

TEST(TraceTest, Text) {
  const TraceFile file(".txt");
  Traced({}, file.Path(), UseEcho);
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

// What a component registers without a declaration is said; a method of streams under the
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
  const std::string names[] = {"A", "B", "C", "D", "E", "F", "G", "H", "I"};
  Traced({}, file.Path(), [&](Host& host) {
    for (const std::string& name : names) {
      host.Register(name.c_str(), "Echo", "EchoProc", reinterpret_cast<void*>(&Echo));
    }
    for (const std::string& name : names) {
      const auto echo = reinterpret_cast<KAPStringAtom* (*)(KAPStringAtom*, int)>(
          host.Find(name.c_str(), "Echo", "EchoProc"));
      EXPECT_EQ(echo(nullptr, 0), nullptr) << name;
    }
  });
  const std::vector<std::string> lines = Lines(Contents(file.Path()));
  const auto isNote = [](const std::string& line) {
    return line.find("Echo has too many procedures: its calls are not traced") != std::string::npos;
  };
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isNote), 2);
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
      R"(( *)((host_test > host(_test)?: \w+\.\w+\("x"(, 0)?\)( = "x"| \{( \.\.\.)?)?)|\} \w+( = "x")?))");
  for (const std::string& text : Lines(Contents(file.Path()))) {
    EXPECT_TRUE(std::regex_match(text, line)) << text;
  }
}

// Off is off: the host hands out its procedures as they are registered.
TEST(TraceTest, Off) {
  TestHost host;
  host.RegisterInterface<EchoInterface>(&Echo, &Fail, &Throw);
  EXPECT_EQ((host.Proc<EchoInterface, "Throw">()), &Throw);
  EXPECT_TRUE(host.LiveThings().empty());
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

// A wrong word of the environment harms nothing but itself, and the program is told.
TEST(DebugWordsTest, Environment) {
  const TraceFile file(".txt");
  const struct {
    std::string words;
    const char* error;
    bool isTraced;
  } rows[] = {{"trace=" + file.Path(), "", true},
              {"trcae", "KAP host: \"trcae\" is not a word of KAPHOST_DEBUG", false},
              {"trace=/no/such/folder/x", "KAP host: cannot write \"/no/such/folder/x\"", false},
              {"help", "the words of KAPHOST_DEBUG", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.words);
    std::remove(file.Path().c_str());
    ::setenv("KAPHOST_DEBUG", row.words.c_str(), 1);
    ::testing::internal::CaptureStderr();
    {
      const TestHost host;
      host.TakeText(host.Atom("a"));
    }
    ::unsetenv("KAPHOST_DEBUG");
    EXPECT_TRUE(::testing::internal::GetCapturedStderr().starts_with(row.error));
    EXPECT_EQ(Contents(file.Path()).find("NewStringAtom") != std::string::npos, row.isTraced);
  }
}

}  // namespace
