// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <cstdio>
#include <fstream>
#include <latch>
#include <sstream>
#include <thread>

#include "CarelessInterface.h"
#include "TestHost.h"

// What a host that checks says about a component that misuses it, and about what a component leaks.

namespace {

using namespace KAP_T_MT;
using KAPHost::Host;
using KAPHost::HostOptions;

// At its end nothing is held, unless the test says so.
HostOptions Checking(bool leaks = false) {
  HostOptions options{.fOnReport = {}, .fOnLeak = {}, .fChecks = true};
  options.fOnLeak = [leaks](const auto& held) { EXPECT_TRUE(leaks) << held; };
  options.fDebug.fDeclared = KAPHost::Declare<TKAPInterfaceSet<CarelessInterface>>();
  return options;
}

// A host that checks, with the careless component loaded.
class MisuseTest : public ::testing::Test {
 protected:
  // The reports of one misuse.
  std::vector<std::string> Reports(const char* how) {
    fHost.Proc<CarelessInterface, "Misuse">()(how);
    return fHost.TakeReports();
  }

  Host fHost{Checking()};
  KAPHost::Component fCareless = fHost.Load(CARELESS_COMPONENT, "Careless");
};

TEST_F(MisuseTest, Reports) {
  const std::string made = "\n  made by Careless in ";
  const std::string container = "KAPContainerInterface.NewFullContainer";
  const std::string block = made + "KAPMemoryInterface.Alloc";
  const struct {
    const char* how;
    std::string report;  // after "KAP host: "
  } rows[] = {
      {"release a dead container",
       "release of a dead container \"Thing\""
       "\n  used by Careless in KAPContainerInterface.Release" +
           made + container + "\n  ended by Careless in KAPContainerInterface.Release"},
      {"refer to a dead container",
       "AddRef of a dead container \"Thing\""
       "\n  used by Careless in KAPContainerInterface.AddRef" +
           made + container + "\n  ended by Careless in KAPContainerInterface.Release"},
      {"release a dead error",
       "release of a dead error \"careless\""
       "\n  used by Careless in KAPErrorInterface.Release" +
           made + "KAPErrorInterface.NewError\n  ended by Careless in KAPErrorInterface.Release"},
      {"use a dead atom",
       "use of a dead atom \"gone\""
       "\n  used by Careless in KAPStringInterface.GetCString" +
           made +
           "KAPStringInterface.NewStringAtom"
           "\n  ended by Careless in KAPStringInterface.DeleteStringAtom"},
      {"release a dead buffer",
       "release of a dead buffer"
       "\n  used by Careless in KAPSharedBuffInterface.Release" +
           made +
           "KAPSharedBuffInterface.NewBuffer"
           "\n  ended by Careless in KAPSharedBuffInterface.Release"},
      {"refer to a dead buffer",
       "AddRef of a dead buffer"
       "\n  used by Careless in KAPSharedBuffInterface.AddRef" +
           made +
           "KAPSharedBuffInterface.NewBuffer"
           "\n  ended by Careless in KAPSharedBuffInterface.Release"},
      {"pass an error as a container",
       "an error \"careless\" was passed as a container"
       "\n  used by Careless in KAPContainerInterface.Release" +
           made + "KAPErrorInterface.NewError"},
      {"pass no handle",
       "what was passed as a container is not one"
       "\n  used by Careless in KAPContainerInterface.Release"},
      {"write past a block",
       "a block of 10 bytes was written past its end"
       "\n  used by Careless in KAPMemoryInterface.Free" +
           block},
      {"write before a block",
       "a block of 10 bytes was written before its start"
       "\n  used by Careless in KAPMemoryInterface.Free" +
           block},
      {"write past a buffer",
       "a buffer of 8 bytes was written past its end"
       "\n  used by Careless in KAPSharedBuffInterface.Release" +
           made + "KAPSharedBuffInterface.NewBuffer"},
      {"release too often what the host holds",
       "release of a reference to atom \"Thing\" that no component has"
       "\n  used by Careless in KAPStringInterface.DeleteStringAtom" +
           made + "KAPStringInterface.NewStringAtom"},
      {"free a block twice",
       "Free of a block that is already freed"
       "\n  used by Careless in KAPMemoryInterface.Free" +
           block + "\n  ended by Careless in KAPMemoryInterface.Free"},
      {"reallocate a freed block",
       "Realloc of a block that is already freed"
       "\n  used by Careless in KAPMemoryInterface.Realloc" +
           block + "\n  ended by Careless in KAPMemoryInterface.Free"},
      {"reallocate memory of malloc",
       "Realloc of memory that is not the host's"
       "\n  used by Careless in KAPMemoryInterface.Realloc"},
      {"free memory of malloc",
       "Free of memory that is not the host's"
       "\n  used by Careless in KAPMemoryInterface.Free"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.how);
    EXPECT_EQ(Reports(row.how), std::vector<std::string>{"KAP host: " + row.report});
  }
  EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty()) << fHost.TakeSnapshot();
}

// What a procedure of a component does wrong with its results is corrected as far as it goes.
TEST_F(MisuseTest, Results) {
  const struct {
    const char* method;
    KAPError* (*proc)(double*);
    std::string report;
  } rows[] = {
      {"LeaveUnset", fHost.Proc<CarelessInterface, "LeaveUnset">(),
       "a procedure left its result place unset"},
      {"ReturnErrorOnly", fHost.Proc<CarelessInterface, "ReturnErrorOnly">(),
       "a procedure returned an error and left its result place unset"},
      {"ReturnBoth", fHost.Proc<CarelessInterface, "ReturnBoth">(),
       "a procedure returned both a result and an error"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.method);
    double result = 7;
    fHost.Proc<KAPErrorInterface, "Release">()(row.proc(&result));
    EXPECT_EQ(fHost.TakeReports(),
              std::vector<std::string>{"KAP host: " + row.report +
                                       "\n  used by host_test in CarelessInterface." + row.method +
                                       " of Careless"});
    EXPECT_EQ(result, row.method == std::string("ReturnBoth") ? 1 : 0);
  }
  double result = 7;
  fHost.Proc<KAPErrorInterface, "Release">()(
      fHost.Proc<CarelessInterface, "ReturnErrorAndZero">()(&result));
  EXPECT_EQ(fHost.TakeReports(), std::vector<std::string>());
  EXPECT_THROW((fHost.Proc<CarelessInterface, "Throw">()()), int);
  EXPECT_EQ(fHost.TakeReports(),
            std::vector<std::string>{"KAP host: an exception left a procedure"
                                     "\n  used by host_test in CarelessInterface.Throw"
                                     " of Careless"});
  EXPECT_NE((fHost.Proc<CarelessInterface, "ReturnDead">()()), nullptr);
  const std::vector<std::string> reports = fHost.TakeReports();
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_TRUE(reports[0].starts_with("KAP host: a procedure returned a dead atom \"returned\""));
}

// The first line of the only report.
std::string TakeHeadline(Host& host) {
  const std::vector<std::string> reports = host.TakeReports();
  EXPECT_EQ(reports.size(), 1u);
  return reports.empty() ? "" : reports[0].substr(0, reports[0].find('\n'));
}

TEST_F(MisuseTest, ResultsOfOtherKinds) {
  KAPError* const other = fHost.Proc<CarelessInterface, "ReturnOther">()();
  EXPECT_EQ(TakeHeadline(fHost),
            "KAP host: a procedure returned a container \"Thing\" as an error");
  fHost.Proc<KAPContainerInterface, "Release">()(reinterpret_cast<KAPContainer*>(other));
  KAPStringAtom* atom = nullptr;
  EXPECT_EQ((fHost.Proc<CarelessInterface, "PlaceOther">()(&atom)), nullptr);
  EXPECT_EQ(TakeHeadline(fHost), "KAP host: what a procedure returned as an atom is not one");
  unsigned char byte = 0;
  EXPECT_EQ((fHost.Proc<CarelessInterface, "ReturnByte">()(&byte)), nullptr);
  EXPECT_EQ(byte, 0xE5);  // any byte may be a result
  EXPECT_EQ(fHost.TakeReports(), std::vector<std::string>());
}

// A refused call leaves no result, and it has not used the object: another thread may.
TEST_F(MisuseTest, RefusedCalls) {
  KAPContainer* container = nullptr;
  fHost.Proc<KAPContainerInterface, "NewContainer">()(&container);
  KAPStringAtom* const name = fHost.Proc<KAPStringInterface, "NewStringAtom">()("name");
  KAPContainer* out = container;
  const auto release = fHost.Proc<KAPErrorInterface, "Release">();
  release(fHost.Proc<KAPContainerInterface, "CloneContainer">()(
      &out, reinterpret_cast<KAPContainer*>(name)));
  EXPECT_EQ(out, nullptr);
  const auto add = fHost.Proc<KAPContainerInterface, "RegisterInterface">();
  release(add(container, reinterpret_cast<KAPStringAtom*>(container), name));
  EXPECT_EQ(fHost.TakeReports().size(), 2u);
  std::thread([&] { release(add(container, name, name)); }).join();
  EXPECT_EQ(fHost.TakeReports(), std::vector<std::string>());
  fHost.Proc<KAPStringInterface, "DeleteStringAtom">()(name);
  fHost.Proc<KAPContainerInterface, "Release">()(container);
  EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty()) << fHost.TakeSnapshot();
}

// A block starts after its guard, so the C library or the sanitizer stops the process.
TEST_F(MisuseTest, FreeOfAHostBlock) {
  EXPECT_DEATH((fHost.Proc<CarelessInterface, "Misuse">()("free a block with free")),
               "invalid pointer|not malloc");
}

// The oldest of many freed blocks is given back: only then is it known that nothing wrote to it.
TEST_F(MisuseTest, ManyFreedBlocks) {
  fHost.Proc<CarelessInterface, "Misuse">()("write to a freed block");
  EXPECT_EQ(fHost.TakeReports(), std::vector<std::string>());
  for (int i = 0; i < 20; ++i) {
    fHost.Proc<KAPMemoryInterface, "Free">()(fHost.Proc<KAPMemoryInterface, "Alloc">()(1 << 20));
  }
  const std::vector<std::string> reports = fHost.TakeReports();
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_TRUE(
      reports[0].starts_with("KAP host: a block of 10 bytes was written after it was freed"));
  for (const std::size_t size : {~0ul, ~0ul >> 1}) {
    EXPECT_EQ((fHost.Proc<KAPMemoryInterface, "Alloc">()(size)), nullptr);
    void* const block = fHost.Proc<KAPMemoryInterface, "Alloc">()(10);
    EXPECT_EQ((fHost.Proc<KAPMemoryInterface, "Realloc">()(block, size)), nullptr);
    fHost.Proc<KAPMemoryInterface, "Free">()(block);
  }
}

// The memory of the oldest of many dead objects is used again.
TEST_F(MisuseTest, ManyDeadObjects) {
  KAPSharedBuffer* buffer = nullptr;
  for (int i = 0; i < 50'010; ++i) {
    buffer =
        fHost.Proc<KAPSharedBuffInterface, "NewBuffer">()(8, nullptr, nullptr, nullptr, nullptr);
    fHost.Proc<KAPSharedBuffInterface, "Release">()(buffer);
  }
  EXPECT_EQ(fHost.TakeReports(), std::vector<std::string>());
  fHost.Proc<KAPSharedBuffInterface, "Release">()(buffer);
  EXPECT_EQ(fHost.TakeReports().size(), 1u);
}

// Two threads inside calls of one stream, which its thread tag forbids: one report, of the second.
// The tag belongs to the method, whatever kind of streams it is registered for.
class MisuseThreadsTest : public ::testing::TestWithParam<const char*> {};

TEST_P(MisuseThreadsTest, ExclusiveCalls) {
  struct Client {
    std::latch fReading{1};
    std::latch fDone{1};
  } client;
  Host host(Checking());
  KAPContainer* stream = nullptr;
  const auto read = [](std::size_t* out, void* own, unsigned char*, std::size_t) -> KAPError* {
    auto* const both = static_cast<Client*>(own);
    both->fReading.count_down();
    both->fDone.wait();
    *out = 0;
    return nullptr;
  };
  const auto write = [](void*, const unsigned char*, std::size_t) -> KAPError* { return nullptr; };
  const auto forget = [](void*) -> KAPError* { return nullptr; };
  host.Proc<KAPStreamFactoryInterface, "NewClientSimpleStream">()(&stream, &client, read, write,
                                                                  forget);
  const std::string kind = GetParam();
  const auto readProc = reinterpret_cast<KAPSimpleStreamInterface::Proc<"Read">>(
      host.Find(kind.c_str(), "Read", "KAPSimpleStreamReadProc"));
  const auto writeProc = reinterpret_cast<KAPSimpleStreamInterface::Proc<"Write">>(
      host.Find(kind.c_str(), "Write", "KAPSimpleStreamWriteProc"));
  std::thread reader([&] {
    std::size_t count = 0;
    unsigned char byte = 0;
    readProc(&count, stream, &byte, 1);
  });
  client.fReading.wait();
  writeProc(stream, nullptr, 0);
  client.fDone.count_down();
  reader.join();
  writeProc(stream, nullptr, 0);
  host.Proc<KAPContainerInterface, "Release">()(stream);
  EXPECT_EQ(host.TakeReports(),
            std::vector<std::string>{
                "KAP host: two threads use container \"KAPHostSimpleStream\" at the same time, "
                "which one of the calls forbids"
                "\n  used by host_test in " +
                kind + ".Write\n  also used by host_test in " + kind +
                ".Read"
                "\n  made by host_test in KAPStreamFactoryInterface.NewClientSimpleStream"});
}

INSTANTIATE_TEST_SUITE_P(Streams, MisuseThreadsTest,
                         ::testing::Values("KAPSimpleStreamInterface",
                                           "KAPRewindableStreamInterface",
                                           "KAPPositionableStreamInterface"));

TEST(MisuseBindingTest, BindingThread) {
  Host host(Checking());
  const auto add = host.Proc<KAPCacheInterface, "AddClientPurge">();
  const auto remove = host.Proc<KAPCacheInterface, "RemoveClientPurge">();
  add([] {}, 1);
  EXPECT_TRUE(host.TakeReports().empty());
  // Not the last thing that the thread does: a jump to the procedure would have no caller here.
  bool isRemoved = false;
  std::thread([&] {
    remove([] {}, 1);
    isRemoved = true;
  }).join();
  EXPECT_TRUE(isRemoved);
  EXPECT_EQ(host.TakeReports(),
            std::vector<std::string>{
                "KAP host: a call that only the binding thread may make came from another one"
                "\n  used by host_test in KAPCacheInterface.RemoveClientPurge"
                "\n  bound by host_test in KAPCacheInterface.AddClientPurge"});
}

// A component that is loaded anew may be bound by another thread.
TEST(MisuseBindingTest, BindingThreadOfEachLoad) {
  Host host(Checking());
  const auto bind = [&] {
    const KAPHost::Component careless = host.Load(CARELESS_COMPONENT, "Careless");
    host.Proc<CarelessInterface, "Misuse">()("bind and unbind");
  };
  bind();
  std::thread(bind).join();
  EXPECT_EQ(host.TakeReports(), std::vector<std::string>());
}

struct LeftInterface
    : TKAPInterface<"LeftInterface", TKAPMethod<"GetVersion", "LeftGetVersionProc", int()>> {};

// The library stays in memory, so that the call does not crash.
TEST(MisuseUnloadedTest, CallOfAProcedureLeftRegistered) {
  HostOptions options = Checking();
  options.fDebug.fDeclared = KAPHost::Declare<TKAPInterfaceSet<LeftInterface>>();
  Host host(options);
  const auto leave = [&] {
    const KAPHost::Component careless = host.Load(CARELESS_COMPONENT, "Careless");
    void* const file = dlopen(CARELESS_COMPONENT, RTLD_NOW | RTLD_NOLOAD);
    host.Register("LeftInterface", "GetVersion", "LeftGetVersionProc",
                  dlsym(file, "CarelessGetVersion"));
    dlclose(file);
    const auto getVersion = host.Proc<LeftInterface, "GetVersion">();
    EXPECT_EQ(getVersion(), 1);
    EXPECT_EQ(host.TakeReports(), std::vector<std::string>());
    return getVersion;
  };
  for (int i = 0; i < 2; ++i) {  // a component that registers it again makes up for it
    const auto getVersion = leave();
    EXPECT_EQ(host.TakeReports().size(), 1u);
    EXPECT_EQ(getVersion(), 1);
    EXPECT_EQ(
        host.TakeReports(),
        std::vector<std::string>{"KAP host: call of a procedure whose component was unloaded"
                                 "\n  used by host_test in LeftInterface.GetVersion of Careless"});
  }
}

// A report with stacks names the function, also when the component is unloaded since.
TEST(MisuseStacksTest, Report) {
  std::vector<std::string> reports;
  {
    HostOptions options = Checking();
    options.fDebug.fStacks = true;
    options.fOnReport = [&](const std::string& text) { reports.push_back(text); };
    Host host(options);
    const KAPHost::Component careless = host.Load(CARELESS_COMPONENT, "Careless");
    host.Proc<CarelessInterface, "Misuse">()("write to a freed block");
    EXPECT_TRUE(reports.empty());
  }
  ASSERT_EQ(reports.size(), 1u);  // found at the end of the host
  EXPECT_TRUE(
      reports[0].starts_with("KAP host: a block of 10 bytes was written after it was freed"
                             "\n  made by Careless in KAPMemoryInterface.Alloc\n    "))
      << reports[0];
#ifdef KAP_HOST_SYMBOLS
  EXPECT_NE(reports[0].find("Misuse (careless_component.cpp:"), std::string::npos) << reports[0];
#else
  EXPECT_NE(reports[0].find("\n    Careless+0x"), std::string::npos) << reports[0];
#endif
}

// ---- What is leaked ----

std::string Contents(const std::string& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

// A trace follows neither dead handles nor other addresses. Before the tests that leak: the hosts
// after them accept handles of theirs.
TEST(MisuseTraceTest, BadHandles) {
  const std::string path = ::testing::TempDir() + "misuse_trace." + std::to_string(::getpid());
  {
    HostOptions options = Checking();
    options.fDebug.fTrace = path;
    Host host(options);
    const auto release = host.Proc<KAPErrorInterface, "Release">();
    KAPError* const error =
        host.Proc<KAPErrorInterface, "NewError">()("gone", "c", 3, nullptr, nullptr);
    long words[8] = {};
    for (KAPError* each : {error, error, reinterpret_cast<KAPError*>(words)}) release(each);
    EXPECT_EQ(host.TakeReports().size(), 2u);
  }
  const std::string trace = Contents(path);
  const std::string call = "host_test > host: KAPErrorInterface.Release(";
  for (const char* const handle : {"error \"gone\")", "dead error \"gone\")", "invalid handle)"}) {
    EXPECT_NE(trace.find(call + handle), std::string::npos) << trace;
  }
  std::remove(path.c_str());
}

TEST(LeaksTest, ListNamesMakerAndHolder) {
  const struct {
    const char* how;
    const char* line;
    const char* made;
  } rows[] = {
      {"leak an atom", "atom \"leaked\": 1 reference of Careless",
       "KAPStringInterface.NewStringAtom"},
      {"leak a container", "container \"Thing\": 1 reference of Careless",
       "KAPContainerInterface.NewFullContainer"},
      {"leak an error", "error \"careless\": 1 reference of Careless",
       "KAPErrorInterface.NewError"},
      {"leak a buffer", "buffer: 1 reference of Careless", "KAPSharedBuffInterface.NewBuffer"},
      {"leak a block", "block of 24 bytes: Careless", "KAPMemoryInterface.Alloc"},
      {"leak a stream", "container \"KAPHostPositionableStream\": 1 reference of Careless",
       "KAPStreamFactoryInterface.NewPositionableMemoryStream"},
      {"release a dead container", nullptr, nullptr},
  };
  const std::string path = ::testing::TempDir() + "misuse_test." + std::to_string(::getpid());
  // Stays in memory with what it leaks, where leak detectors see it.
  ASSERT_NE(::dlopen(CARELESS_COMPONENT, RTLD_NOW), nullptr);
  for (const auto& row : rows) {
    for (const bool checks : {true, false}) {
      if (!checks && !row.line) continue;  // undefined behaviour without checks
      SCOPED_TRACE(std::string(row.how) + (checks ? ", with checks" : ""));
      {
        HostOptions options = Checking(true);
        options.fChecks = checks;
        options.fDebug.fLeaks = path;
        Host host(options);
        const KAPHost::Component careless = host.Load(CARELESS_COMPONENT, "Careless");
        host.Proc<CarelessInterface, "Misuse">()(row.how);
      }
      EXPECT_EQ(
          Contents(path),
          row.line ? std::string(row.line) + "\n  made by Careless in " + row.made + '\n' : "");
      std::remove(path.c_str());  // the next host of the process would append to it
    }
  }
  Host host({.fOnReport = {}, .fOnLeak = [](const auto&) {}});
  const KAPHost::Component careless = host.Load(CARELESS_COMPONENT, "Careless");
  host.Proc<CarelessInterface, "Misuse">()("free the leaked blocks");
}

TEST(LeaksTest, LiveThingsBetweenTwoMoments) {
  HostOptions options = Checking();
  options.fDebug.fStacks = true;
  Host host(options);
  const KAPHost::Component careless = host.Load(CARELESS_COMPONENT, "Careless");
  const auto newAtom = host.Proc<KAPStringInterface, "NewStringAtom">();
  const auto deleteAtom = host.Proc<KAPStringInterface, "DeleteStringAtom">();
  KAPStringAtom* const before = newAtom("before");
  const unsigned long moment = host.LastThing();
  KAPStringAtom* const after = newAtom("after");
  deleteAtom(newAtom("gone"));
  EXPECT_EQ(host.LiveThings().size(), 2u);
  const auto things = host.LiveThings(moment);
  ASSERT_EQ(things.size(), 1u);
  EXPECT_EQ(things[0].fName, "atom \"after\"");
  EXPECT_EQ(things[0].fMaker, "host_test");
  EXPECT_EQ(things[0].fHolders, "host_test");
#ifdef KAP_HOST_SYMBOLS
  EXPECT_NE(things[0].fHistory.find("(misuse_test.cpp:"), std::string::npos) << things[0];
#endif
  deleteAtom(after);
  // One reference more to a thing that was there.
  const auto all = host.LiveThings();
  newAtom("before");
  deleteAtom(newAtom("before"));
  const auto more = KAPHost::HeldMore(all, host.LiveThings());
  ASSERT_EQ(more.size(), 1u);
  EXPECT_EQ(more[0].fName, "atom \"before\"");
  EXPECT_EQ(more[0].fReferences, 1);
  for (int i = 0; i < 2; ++i) deleteAtom(before);
  EXPECT_TRUE(host.LiveThings().empty());
}

// What a component holds of a former host is not known to the next one, and no misuse.
TEST(LeaksTest, HandlesOfAFormerHost) {
  KAPContainer* container = nullptr;
  KAPStringAtom* atom = nullptr;
  void* blocks[2] = {};
  {
    const Host host({.fOnReport = {}, .fOnLeak = [](const auto&) {}});
    host.Proc<KAPContainerInterface, "NewContainer">()(&container);
    atom = host.Proc<KAPStringInterface, "NewStringAtom">()("kept");
    blocks[0] = host.Proc<KAPMemoryInterface, "Alloc">()(100);
    blocks[1] = host.Proc<KAPMemoryInterface, "Alloc">()(100);
  }
  Host host(Checking(true));
  const auto free = host.Proc<KAPMemoryInterface, "Free">();
  EXPECT_GE((host.Proc<KAPMemoryInterface, "GetBlockSize">()(blocks[0])), 100u);
  blocks[0] = host.Proc<KAPMemoryInterface, "Realloc">()(blocks[0], 200);
  for (void* block : blocks) free(block);
  host.Proc<KAPContainerInterface, "Release">()(container);
  host.Proc<KAPStringInterface, "DeleteStringAtom">()(atom);
  EXPECT_EQ(host.TakeReports(), std::vector<std::string>());
  const KAPHost::Snapshot given = host.TakeSnapshot();
  EXPECT_EQ(given.Total(KAPResource::kContainer).fNumber, -1);
  EXPECT_EQ(given.Total(KAPResource::kAtom).fNumber, -1);
  EXPECT_EQ(given.Total(KAPResource::kBlock).fNumber, -2);
}

// A guarded block is freed as one, whatever the host that lives by then.
TEST(LeaksTest, BlocksOutliveTheirHost) {
  void* block = nullptr;
  {
    const Host host(Checking(true));
    block = host.Proc<KAPMemoryInterface, "Alloc">()(100);
  }
  const Host host({.fOnReport = {}, .fOnLeak = [](const auto&) {}});
  block = host.Proc<KAPMemoryInterface, "Realloc">()(block, 300);
  EXPECT_GE((host.Proc<KAPMemoryInterface, "GetBlockSize">()(block)), 300u);
  host.Proc<KAPMemoryInterface, "Free">()(block);
  EXPECT_EQ(host.TakeSnapshot().Total(KAPResource::kBlock).fNumber, -1);
}

// The error of a callback is the host's until it returns it, and then its caller's.
TEST(LeaksTest, ErrorsOfCallbacks) {
  for (const bool checks : {true, false}) {
    SCOPED_TRACE(checks);
    HostOptions options = Checking();
    options.fChecks = checks;
    options.fDebug.fStacks = true;
    Host host(options);
    const auto newError = host.Proc<KAPErrorInterface, "NewError">();
    static KAPError* (*make)(const char*, const char*, long, void*, KAPDeleteProc) = nullptr;
    make = newError;
    KAPDataSink* sink = nullptr;
    int data = 0;
    host.Proc<KAPFilterInterface, "NewClientDataSink">()(
        &sink, &data,
        [](void*, const unsigned char*, std::size_t) {
          return make("w", "t", 1, nullptr, nullptr);
        },
        [](void*) { return make("d", "t", 1, nullptr, nullptr); });
    KAPError* const error = host.Proc<KAPFilterInterface, "Write">()(sink, nullptr, 0);
    auto things = host.LiveThings();
    ASSERT_EQ(things.size(), 1u);
    EXPECT_EQ(things[0].fName, "error \"w\"");
    EXPECT_EQ(things[0].fReferences, 1);
    EXPECT_EQ(things[0].fHolders, "host_test");
    host.Proc<KAPErrorInterface, "Release">()(error);
    EXPECT_TRUE(host.LiveThings().empty());
    host.Proc<KAPFilterInterface, "Release">()(sink);
    EXPECT_EQ(host.TakeReports(), std::vector<std::string>{"d"});
    EXPECT_TRUE(host.LiveThings().empty());
  }
}

// A handle that a procedure returns belongs to the caller, not to the component that made it.
TEST(LeaksTest, ReferencesMoveToTheCaller) {
  Host host(Checking());
  const KAPHost::Component careless = host.Load(CARELESS_COMPONENT, "Careless");
  double result = 0;
  KAPError* const error = host.Proc<CarelessInterface, "ReturnBoth">()(&result);
  host.TakeReports();
  const auto things = host.LiveThings();
  ASSERT_EQ(things.size(), 1u);
  EXPECT_EQ(things[0].fMaker, "Careless");
  EXPECT_EQ(things[0].fHolders, "host_test");
  EXPECT_EQ(things[0].fHistory,
            "  made by Careless in KAPErrorInterface.NewError"
            "\n  last taken by host_test in CarelessInterface.ReturnBoth of Careless");
  host.Proc<KAPErrorInterface, "Release">()(error);
}

}  // namespace
