#include "RuntimeTest.h"

// Tables of procedures: when they are loaded, and what happens when something is missing.

namespace {

using namespace KAP_T_MT;

int gPlace;  // an address that nobody calls

class LoadTest : public BoundTest {};

TEST_F(LoadTest, OnceWhenTheCounterMoved) {
  auto useAll = [] {
    const CKAPContainerHolder container;
    const CKAPStringAtom joined = CKAPStringAtom("a") + CKAPStringAtom("b");
    CKAPError("m", "c", 1);
  };
  useAll();
  EXPECT_EQ(HostTap::TakeLookUps(), Log());
  MoveCounter(fHost);
  CKAPStringAtom("x");
  EXPECT_EQ(HostTap::TakeLookUps(), LoadOf<KAPStringInterface>());
  useAll();
  EXPECT_EQ(HostTap::TakeLookUps().size(),
            KAPContainerInterface::kCount + KAPErrorInterface::kCount + KAPMemoryInterface::kCount);
  useAll();
  EXPECT_EQ(HostTap::TakeLookUps(), Log());
  {
    const CKAPStringAtom released("released");
    MoveCounter(fHost);
    HostTap::Clear();
  }
  EXPECT_EQ(HostTap::TakeLookUps(), LoadOf<KAPStringInterface>());
  EXPECT_EQ(HostTap::TextsOf("DeleteStringAtom"), std::vector<std::string>{"released"});
}

TEST_F(LoadTest, AFailedOneIsTriedAgain) {
  for (const char* missing : {"", "First"}) {
    OfferEcho(fHost);
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
    fHost.StopRefusing();
    OfferEcho<10>(fHost);
    EXPECT_EQ(EchoClient::Call<"Third">(), 13);
  }
}

// The first use after binding loads, whatever the counter says and whatever was loaded before.
TEST(FirstUseTest, LoadsWhateverTheCounterSays) {
  static unsigned long counter;
  for (const unsigned long start : {0ul, 0ul, 1ul, 1ul, 2ul, 3ul, ~0ul, ~0ul}) {
    SCOPED_TRACE(start);
    counter = start;
    TestHost host;
    const HostTap tap(host);
    host.Register("KAP", "KAPGetUnregisterCountAddr", "KAPGetUnregisterCountAddr",
                  reinterpret_cast<void*>(+[] { return &counter; }));
    OfferEcho(host);
    ASSERT_TRUE(KAPClientInit(&HostTap::GetProc));
    for (int move = 0; move < 2; ++move, ++counter) {
      HostTap::Clear();
      EXPECT_EQ(EchoClient::Call<"First">(), 1);
      EXPECT_EQ(EchoClient::Call<"First">(), 1);
      EXPECT_EQ(HostTap::TakeLookUps(), LoadOf<EchoInterface>());
    }
    KAPClientTerminate();
  }
}

TEST(LoadProcTableTest, AProcedureMissingInTheMiddle) {
  for (const bool bound : {false, true}) {
    SCOPED_TRACE(bound ? "bound" : "start-up");
    TestHost host;
    OfferEcho(host);
    if (!bound) host.HideInterface("KAPStringInterface");  // binding stops halfway
    ASSERT_EQ(KAPClientInit(host.GetProcAddress()), bound);
    host.StopRefusing();
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
    host.StopRefusing();
    EXPECT_EQ(load(), 1);
    EXPECT_EQ(out[0], EchoProc(host, 0));
    KAPClientTerminate();
  }
}

TEST_F(LoadTest, RegisteringStopsAtTheFirstRefusal) {
  const EchoInterface::Proc<"First"> answer = [] { return 1; };
  const auto entries = EchoInterface::Registration(answer, answer, answer);
  EXPECT_EQ(KAPRegisterProcTable(entries.data(), 0, EchoInterface::kName), 1);
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  fHost.RefuseRegistration(EchoInterface::kName, "Second");
  EXPECT_EQ(KAPRegisterProcTable(entries.data(), 3, EchoInterface::kName), 0);
  EXPECT_EQ(HostTap::TakeCalls().size(), 2u);
  EXPECT_EQ(EchoProc(fHost, 0), reinterpret_cast<void*>(answer));
  fHost.StopRefusing();
  EXPECT_TRUE(KAPRegisterInterface<EchoInterface>(answer, answer, answer));
  EXPECT_EQ(EchoClient::Call<"Third">(), 1);
  KAPUnregisterInterface(EchoInterface::kName);
  EXPECT_EQ(EchoProc(fHost, 0), nullptr);
}

class LoadMethodTableTest : public BoundTest {
 protected:
  LoadMethodTableTest() { OfferEcho(fHost); }

  // The result, or what was thrown.
  std::string Load(int required) {
    for (void*& slot : fOut) slot = &gPlace;
    int result = 0;
    const std::string thrown = Thrown([&] {
      result = KAPLoadMethodTable(EchoInterface::kEntries, 3, fContainer.Handle(), required, fOut);
    });
    return thrown.empty() ? std::to_string(result) : thrown;
  }

  const CKAPContainerHolder fContainer{MakeContainer("Impl"), true};
  void* fOut[EchoInterface::kCount] = {};
};

TEST_F(LoadMethodTableTest, RequiredAndNot) {
  const BalancedScope balanced(fHost);
  EXPECT_EQ(KAPLoadMethodTable(nullptr, 0, nullptr, 1, nullptr), 1);
  for (const int required : {0, 1}) {
    EXPECT_EQ(Load(required), "1");
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(fOut[i], EchoProc(fHost, i));
  }
  fHost.HideProcedure(EchoInterface::kName, "Second");
  for (const int required : {0, 1}) {
    EXPECT_EQ(Load(required), required ? "0" : "1");
    EXPECT_EQ(fOut[0], EchoProc(fHost, 0));
    EXPECT_EQ(fOut[1], nullptr);
    EXPECT_EQ(fOut[2], required ? &gPlace : EchoProc(fHost, 2));
  }
}

TEST_F(LoadMethodTableTest, Refusals) {
  const BalancedScope balanced(fHost);
  for (unsigned long n = 1; n <= 6; ++n) {
    fHost.Refuse(KAPHost::Call::kAtom, n);
    EXPECT_EQ(Load(n % 2), kBadAlloc);
  }
  fHost.StopRefusing();
  fHost.Refuse(KAPHost::Call::kMethod, 2);
  EXPECT_EQ(Load(1), kOutOfMemory);
}

TEST_F(LoadMethodTableTest, ToldTheHostWhetherItIsRequired) {
  static int optional;
  const KAPContainerInterface::Proc<"GetMethod"> spy = [](void** out, KAPContainer*, KAPStringAtom*,
                                                          KAPStringAtom*, int flag) {
    *out = &gPlace;
    optional = flag;
    return static_cast<KAPError*>(nullptr);
  };
  fHost.Register("KAPContainerInterface", "GetMethod", "KAPGetMethodV3Proc",
                 reinterpret_cast<void*>(spy));
  MoveCounter(fHost);
  for (const int required : {0, 1, 5}) {
    EXPECT_EQ(Load(required), "1");
    EXPECT_EQ(optional, required ? 0 : 1);
  }
}

}  // namespace
