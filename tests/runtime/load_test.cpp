// SPDX-License-Identifier: MIT
#include "RuntimeTest.h"

// Tables of procedures: when they are loaded, and what happens when a procedure is missing.

namespace {

using namespace KAP_T_MT;

int gPlace;  // its address stands for a procedure that is never called

class LoadTest : public BoundTest {};

TEST_F(LoadTest, OnceWhenTheCounterMoved) {
  auto useAll = [] {
    const CKAPContainerHolder container;
    const CKAPStringAtom joined = CKAPStringAtom("a") + CKAPStringAtom("b");
    const CKAPError error("m", "c", 1);
    return HostTap::TakeLookUps().size();
  };
  EXPECT_EQ(useAll(), 0u);
  {
    const CKAPStringAtom released("released");
    MoveCounter(fHost);
    HostTap::Clear();
  }
  EXPECT_EQ(HostTap::TakeLookUps().size(), KAPStringInterface::kCount);
  EXPECT_EQ(HostTap::TextsOf("DeleteStringAtom"), std::vector<std::string>{"released"});
  EXPECT_EQ(useAll(),
            KAPContainerInterface::kCount + KAPErrorInterface::kCount + KAPMemoryInterface::kCount);
  EXPECT_EQ(useAll(), 0u);
}

TEST_F(LoadTest, AFailedOneIsTriedAgain) {
  for (const char* missing : {"", "First"}) {
    RegisterEcho(fHost);
    MoveCounter(fHost);
    EXPECT_EQ(EchoClient::Call<"Third">(), 3);
    MoveCounter(fHost);
    fHost.HideProcedure(EchoInterface::kName, missing);
    auto fail = [] { EXPECT_EQ(Thrown([] { EchoClient::Call<"Third">(); }), kMissingProcedure); };
    fail();  // the error itself needs tables
    HostTap::Clear();
    fail();
    EXPECT_FALSE(EchoClient::TryRefresh());
    EXPECT_EQ(HostTap::TakeLookUps().size(), *missing ? 6u : 2u);
    EXPECT_EQ(Thrown([] { EchoClient::LoadProcTable(true); }), kMissingProcedure);
    fHost.StopFaults();
    RegisterEcho<10>(fHost);
    EXPECT_TRUE(EchoClient::LoadProcTable(true));
    EXPECT_EQ(EchoClient::Slots()[2], EchoProc(fHost, 2));
    EXPECT_EQ(EchoClient::Call<"Third">(), 13);
    const auto counter = fHost.Proc<KAPBinderInterface, "KAPGetUnregisterCountAddr">();
    EXPECT_EQ(EchoClient::LoadedAt(), *counter());
  }
}

// A counter that moves while a table is loaded: what the load found first may be out of date.
TEST(LoadRaceTest, LoadedAgainUntilTheCounterStandsStill) {
  static TestHost* host;
  static bool moves;
  TestHost own;
  host = &own;
  moves = false;
  RegisterEcho(own);
  static KAPGetProcAddressProc getProc;
  getProc = own.GetProcAddress();
  ASSERT_TRUE(KAPClientInit([](const char* interfaceName, const char* method, const char* proc) {
    void* const found = getProc(interfaceName, method, proc);
    if (moves && std::string_view(method) == "First") {  // the last one to be looked up
      moves = false;
      RegisterEcho<10>(*host);
      MoveCounter(*host);
    }
    return found;
  }));
  moves = true;
  EXPECT_EQ(EchoClient::Call<"Third">(), 13);
  KAPClientTerminate();
}

TEST(LoadProcTableTest, AProcedureMissingInTheMiddle) {
  for (const bool bound : {false, true}) {
    SCOPED_TRACE(bound ? "bound" : "start-up");
    TestHost host;
    RegisterEcho(host);
    if (!bound) host.HideInterface("KAPStringInterface");  // binding stops halfway
    ASSERT_EQ(KAPClientInit(host.GetProcAddress()), bound);
    host.StopFaults();
    host.HideProcedure(EchoInterface::kName, "Second");
    void* out[3] = {&gPlace, &gPlace, &gPlace};
    auto load = [&] {
      return KAPLoadProcTable(EchoInterface::kEntries, 3, EchoInterface::kName, out, 1);
    };
    EXPECT_EQ(Thrown([&] { EXPECT_EQ(load(), 0); }), bound ? kMissingProcedure : "");
    EXPECT_EQ(out[2], EchoProc(host, 2));
    EXPECT_EQ(out[1], bound ? &gPlace : nullptr);
    EXPECT_EQ(out[0], &gPlace);

    auto get = [] { EXPECT_EQ(KAPGetProcAddress("EchoInterface", "Second", "P"), nullptr); };
    EXPECT_EQ(Thrown(get), bound ? kMissingProcedure : "");
    EXPECT_EQ(KAPQueryProcAddress("EchoInterface", "Second", "P"), nullptr);
    host.StopFaults();
    EXPECT_EQ(load(), 1);
    EXPECT_EQ(out[0], EchoProc(host, 0));
    KAPClientTerminate();
  }
}

KAPContainerInterface::Proc<"GetMethod"> gGetMethod;
int gOptional;

TEST_F(LoadTest, MethodTableRequiredAndNot) {
  RegisterEcho(fHost);
  gGetMethod = fHost.Proc<KAPContainerInterface, "GetMethod">();
  ReplaceProc<KAPContainerInterface, "GetMethod">(
      fHost, [](void** method, KAPContainer* asked, KAPStringAtom* methodName,
                KAPStringAtom* procName, int optional) {
        gOptional = optional;
        return gGetMethod(method, asked, methodName, procName, optional);
      });
  MoveCounter(fHost);
  const CKAPContainerHolder container(MakeContainer("Impl"), true);
  const BalancedScope balanced(fHost);
  void* out[3] = {};
  for (const bool hidden : {false, true}) {
    if (hidden) fHost.HideProcedure(EchoInterface::kName, "Second");
    for (const int required : {0, 1}) {
      SCOPED_TRACE(testing::Message() << hidden << required);
      for (void*& slot : out) slot = &gPlace;
      const bool fails = hidden && required;
      EXPECT_EQ(KAPLoadMethodTable(EchoInterface::kEntries, 3, container.Handle(), required, out),
                fails ? 0 : 1);
      EXPECT_EQ(out[0], EchoProc(fHost, 0));
      EXPECT_EQ(out[1], hidden ? nullptr : EchoProc(fHost, 1));
      EXPECT_EQ(out[2], fails ? &gPlace : EchoProc(fHost, 2));
      EXPECT_EQ(gOptional, required ? 0 : 1);
    }
  }
  EXPECT_EQ(KAPLoadMethodTable(nullptr, 0, nullptr, 1, nullptr), 1);
}

}  // namespace
