// SPDX-License-Identifier: MIT
#include <cstring>
#include <optional>
#include <set>

#include "RuntimeTest.h"

// A host that loses a procedure while it is bound: an interface is registered again with a
// procedure missing, and the counter has moved. Calls fail, failures are still reported, and
// releases reach the host.

namespace {

using namespace KAP_T_MT;

struct Held {
  CKAPStringAtom fAtom{"held"};
  CKAPError fError{"held", "c", 1};
  CKAPContainerHolder fContainer;
  TKAPBlock<char> fBlock = KAPNewBlock<char>(10);
  TKAPSharedBuffer<char> fBuffer{std::size_t{4}};
  CKAPDataSink fSink = CKAPDataSink::New();
  CKAPProgress fProgress = CKAPProgress::New();
};

class LostProcedureTest : public BoundTest {
 protected:
  // Runs body(interface name, method name, whether the method releases) for each procedure of the
  // host.
  template <class Body>
  void ForEachLost(Body body) {
    KAPHostInterfaceSet::ForEach([&]<class Interface>() {
      for (std::size_t i = 0; i < Interface::kCount; ++i) {
        const char* const method = Interface::kEntries[i].fMethodName;
        SCOPED_TRACE(std::string(Interface::kName) + " " + method);
        body(Interface::kName, method, Interface::kTraits[i].fNoOpUnbound);
      }
    });
  }
  void Lose(const char* interfaceName, const char* method) {
    fHost.HideProcedure(interfaceName, method);
    MoveCounter(fHost);
  }
  void Restore() {
    fHost.StopFaults();
    MoveCounter(fHost);
  }
};

TEST_F(LostProcedureTest, ReleasesReachTheHost) {
  ForEachLost([&](const char* interfaceName, const char* method, bool releases) {
    const BalancedScope balanced(fHost);
    std::optional<Held> held(std::in_place);
    Lose(interfaceName, method);
    // Without the procedure that releases, nothing could be released: that is tested with it.
    if (releases) Restore();
    held.reset();
    Restore();
  });
}

TEST_F(LostProcedureTest, FailuresAreReported) {
  ForEachLost([&](const char* interfaceName, const char* method, bool) {
    const BalancedScope balanced(fHost);
    {
      const CKAPError error("message", "c", 1);
      Lose(interfaceName, method);
      KAPReportingError([&] { throw CKAPError(error); });
      KAPReportingError([] { throw std::bad_alloc(); });
      Restore();
      // The copy's reference, which could not be released.
      if (!std::strcmp(method, "Release") && interfaceName == KAPErrorInterface::kName) {
        const CKAPError copy(error.Handle());
      }
    }
    const std::vector<std::string> reports = fHost.TakeReports();
    ASSERT_EQ(reports.size(), 2u);
    // Without AddRef the copy is the empty error.
    const std::set<std::string> known = {"message", "unknown KAP error", "Invalid CKAPError"};
    EXPECT_TRUE(known.contains(reports[0])) << reports[0];
    EXPECT_EQ(reports[1], kBadAlloc);
  });
}

// Made before any other static object, in whatever order the files are linked.
struct Early {
  Early() {
    KAPHost::Host host;
    const KAPClient client(host.GetProcAddress());
    CKAPPositionableStream stream;
    stream.Write(reinterpret_cast<const unsigned char*>("early"), 5);
    fPosition = stream.Mark();
  }
  long fPosition = 0;
};
[[gnu::init_priority(101)]] const Early gEarly;

TEST(StaticStateTest, IsThereBeforeAnyInitialiserRuns) { EXPECT_EQ(gEarly.fPosition, 5); }

TEST(KAPClientTest, BindsForItsLifetime) {
  TestHost host;
  {
    const KAPClient client(host.GetProcAddress());
    EXPECT_STREQ(CKAPStringAtom("bound").Text(), "bound");
    EXPECT_THROW(static_cast<void>(KAPClient(host.GetProcAddress())), KAPBindingError);
    EXPECT_TRUE(KAPIsBound());
  }
  EXPECT_FALSE(KAPIsBound());
  struct Cache : CKAPStaticCacheBase {
    void Clear() override {}
    void Kill() noexcept override {}
  } cache;
  const char* const kLacksInterface =
      "cannot bind the client runtime: the host lacks one of the interfaces that the client "
      "runtime "
      "needs";
  const std::pair<const char*, const char*> rows[] = {
      {"KAPStringInterface", kLacksInterface},
      {"KAPMemoryInterface", "cannot bind the client runtime: Missing Interface"},
      {"KAPCacheInterface", kLacksInterface}};
  for (const auto& [lost, message] : rows) {
    host.HideInterface(lost);
    EXPECT_EQ(Thrown([&] { const KAPClient client(host.GetProcAddress()); }), message);
    EXPECT_FALSE(KAPIsBound());
    host.StopFaults();
  }
  ReplaceProc<KAPErrorInterface, "GetErrorMessage">(
      host, [](KAPError*) { return static_cast<KAPStringAtom*>(nullptr); });
  host.HideInterface("KAPMemoryInterface");  // its error has no text
  EXPECT_EQ(Thrown([&] { const KAPClient client(host.GetProcAddress()); }), kLacksInterface);
  EXPECT_THROW(static_cast<void>(KAPClient(nullptr)), KAPBindingError);
}

// What a member throws when the binding ends is reported, and the binding ends all the same.
TEST(KAPClientTest, EndsInSpiteOfAMember) {
  TestHost host;
  struct Failing : LazyTerminate {
    void Terminate() override { throw TOQException("cannot release"); }
  } failing;
  { const KAPClient client(host.GetProcAddress()); }
  EXPECT_EQ(host.TakeReport(), "cannot release");
  EXPECT_FALSE(KAPIsBound());
  // Nor does it hide that another member has made the binding fail.
  struct Refusing : LazyTerminate {
    bool Initialize() override { return false; }
    void Terminate() override {}
  } refusing;
  EXPECT_THROW(static_cast<void>(KAPClient(host.GetProcAddress())), KAPBindingError);
  EXPECT_EQ(host.TakeReport(), "cannot release");
}

}  // namespace
