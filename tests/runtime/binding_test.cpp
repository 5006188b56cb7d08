// SPDX-License-Identifier: MIT
#include <optional>

#include "RuntimeTest.h"

namespace {

using namespace KAP_T_MT;

template <class Handle>
Handle* DeadHandle() {
  return reinterpret_cast<Handle*>(64);
}

// Static objects may release what they hold before a host exists.
const bool gReleasedBeforeBinding = [] {
  const KAPContainerBaseGeneric wrapper(DeadHandle<KAPContainer>(), KAPAdopt());
  const CKAPContainerHolder holder(DeadHandle<KAPContainer>(), true);
  const CKAPCachedContainerHolder cached(DeadHandle<KAPContainer>());
  const CKAPError error(DeadHandle<KAPError>());
  CKAPMemory::Free(DeadHandle<void>());
  const TKAPSharedBuffer<char> buffer(DeadHandle<KAPSharedBuffer>(), KAPAdopt());
  return true;
}();

TEST(UnboundTest, NothingWorksAndNothingCrashes) {
  EXPECT_TRUE(gReleasedBeforeBinding);
  EXPECT_FALSE(KAPClientInit(nullptr));
  EXPECT_FALSE(KAPIsBound());
  EXPECT_EQ(KAPQueryProcAddress("KAP", "KAPReportError", "KAPReportError"), nullptr);
  KAPReportError("dropped");
  KAPUnregisterInterface("I");
  KAPClientTerminate();
  EXPECT_EQ(Thrown([] { CKAPStringAtom("x"); }), "(empty)");
  void* out[] = {DeadHandle<void>(), DeadHandle<void>(), DeadHandle<void>()};
  EXPECT_EQ(KAPLoadProcTable(EchoInterface::kEntries, 3, EchoInterface::kName, out, 0), 0);
  EXPECT_EQ(out[1], DeadHandle<void>());
  EXPECT_EQ(out[2], nullptr);
  EXPECT_EQ(KAPLoadProcTable(EchoInterface::kEntries, 0, EchoInterface::kName, nullptr, 0), 0);
  EXPECT_FALSE(EchoClient::LoadProcTable(true));
  CKAPMemory::Free(nullptr);
  const CKAPError error(DeadHandle<KAPError>());
  EXPECT_STREQ(error.what(), "unknown KAP error");
  EXPECT_EQ(Thrown([&] { error.Matches("c", 1); }), "(empty)");
}

TEST(BindingTest, BoundOnce) {
  TestHost host;
  const HostTap tap(host);
  ASSERT_TRUE(KAPClientInit(&HostTap::GetProc));
  EXPECT_EQ(KAPIsMultiThreaded(), 1);
  HostTap::Clear();
  EXPECT_TRUE(KAPClientInit(nullptr));  // ignores its argument
  EXPECT_EQ(HostTap::TakeLookUps(), Log());
  KAPClientTerminate();
  EXPECT_EQ(HostTap::TakeCalls(), (Log{{"Release", ""}, {"Release", ""}}));  // the shared errors
  EXPECT_FALSE(KAPIsBound());
  KAPReportError("dropped");
  KAPUnregisterInterface(EchoInterface::kName);
  EXPECT_EQ(KAPRegisterProcAddress("I", "M", "P", &host), 0);
  EXPECT_EQ(KAPIsMultiThreaded(), 0);
  EXPECT_EQ(HostTap::TakeCalls(), Log());
}

TEST(BindingTest, NothingOfAKilledBindingIsReleased) {
  {
    TestHost killed;
    ASSERT_TRUE(KAPClientInit(killed.GetProcAddress()));
    KAPClientKill();
  }
  TestHost host;
  const HostTap tap(host);
  ASSERT_TRUE(KAPClientInit(&HostTap::GetProc));
  for (const auto& [method, text] : HostTap::TakeCalls()) EXPECT_NE(method, "Release");
  KAPClientTerminate();
}

TEST(BindingTest, RegistrationStopsAtTheFirstFailure) {
  TestHost host;
  ASSERT_TRUE(KAPClientInit(host.GetProcAddress()));
  host.FailRegistration(EchoInterface::kName, "Second");
  int (*const proc)() noexcept = []() noexcept { return 1; };
  EXPECT_FALSE(KAPRegisterInterface<EchoInterface>(proc, proc, proc));
  EXPECT_EQ(KAPGetProcAddress(EchoInterface::kName, "First", "EchoFirstProc"),
            reinterpret_cast<void*>(proc));
  EXPECT_EQ(KAPQueryProcAddress(EchoInterface::kName, "Third", "EchoThirdProc"), nullptr);
  KAPUnregisterInterface(EchoInterface::kName);
  EXPECT_EQ(KAPQueryProcAddress(EchoInterface::kName, "First", "EchoFirstProc"), nullptr);
  host.StopFaults();
  EXPECT_TRUE(KAPRegisterInterface<EchoInterface>(proc, proc, proc));
  KAPClientTerminate();
}

TEST(BindingTest, FailsWithoutWhatItNeeds) {
  const struct {
    const char* interfaceName;
    const char* methodName;  // "": all methods
    const char* thrown;      // "": returns false
  } rows[] = {{"KAP", "KAPRegisterProcAddress", ""},
              {"KAP", "KAPIsMultiThreaded", ""},
              {"KAPContainerInterface", "", kMissingInterface},
              {"KAPErrorInterface", "GetCoreError", ""},
              {"KAPStringInterface", "", ""},
              {"KAPMemoryInterface", "Realloc", kMissingInterface}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.interfaceName) + " " + row.methodName);
    TestHost host;
    const HostTap tap(host);
    host.HideProcedure(row.interfaceName, row.methodName);
    EXPECT_EQ(Thrown([] { EXPECT_FALSE(KAPClientInit(&HostTap::GetProc)); }), row.thrown);
    HostTap::Clear();
    EXPECT_TRUE(KAPClientInit(&HostTap::GetProc));  // deliberate: the callback stays stored
    EXPECT_EQ(HostTap::TakeLookUps(), Log());
    KAPClientTerminate();

    host.StopFaults();
    EXPECT_TRUE(KAPClientInit(&HostTap::GetProc));
    EXPECT_STREQ(CKAPStringAtom("usable").Text(), "usable");
    KAPClientTerminate();
  }
}

// A host that has no shared error for a lack of memory.
TEST(BindingTest, WithoutTheMemoryError) {
  static KAPErrorInterface::Proc<"GetCoreError"> getCoreError;
  TestHost host;
  getCoreError = host.Proc<KAPErrorInterface, "GetCoreError">();
  ReplaceProc<KAPErrorInterface, "GetCoreError">(
      host, [](int id) { return id == kMemErrorID ? nullptr : getCoreError(id); });
  ASSERT_TRUE(KAPClientInit(host.GetProcAddress()));
  KAPError* const error = KAPReturningError([] { throw std::bad_alloc(); });
  EXPECT_EQ(Describe(CKAPError(error)), kUnknown);
  KAPClientTerminate();
}

// A host that has all procedures, of which one returns nothing.
TEST(BindingTest, FailsWithoutCounterOrCoreErrors) {
  for (const bool counterLost : {false, true}) {
    TestHost host;
    if (counterLost) {
      ReplaceProc<KAPBinderInterface, "KAPGetUnregisterCountAddr">(
          host, [] { return static_cast<unsigned long*>(nullptr); });
    } else {
      ReplaceProc<KAPErrorInterface, "GetCoreError">(
          host, [](int) { return static_cast<KAPError*>(nullptr); });
    }
    EXPECT_FALSE(KAPClientInit(host.GetProcAddress()));
    KAPClientTerminate();
  }
}

std::string gHistory;

class Member : public LazyTerminate {
 public:
  enum Reply { kYes, kNo, kThrow };
  explicit Member(const char* name, Reply reply = kYes) : fName(name), fReply(reply) {}
  bool Initialize() override {
    gHistory += "I" + fName;
    if (fReply == kThrow) throw fReply;
    return fReply == kYes;
  }
  void Terminate() override { gHistory += "T" + fName; }
  void Kill() noexcept override { gHistory += "K" + fName; }

 private:
  std::string fName;
  Reply fReply;
};

TEST(BindingTest, MembersTakePartInOrder) {
  for (const Member::Reply reply : {Member::kYes, Member::kNo, Member::kThrow}) {
    SCOPED_TRACE(reply);
    const bool bound = reply == Member::kYes;
    TestHost host;
    const LazyTerminate idle;  // its operations do nothing, and binding goes on
    const Member first("1");
    std::optional<Member> gone("gone");
    const Member second("2"), third("3", reply), fourth("4");
    gone.reset();
    EXPECT_EQ(KAPClientInit(host.GetProcAddress()), bound);
    EXPECT_EQ(std::exchange(gHistory, ""), bound ? "I1I2I3I4" : "I1I2I3T1T2");
    KAPClientTerminate();
    EXPECT_EQ(std::exchange(gHistory, ""), "T1T2T3T4");
    KAPClientTerminate();
    EXPECT_EQ(gHistory, "");
    KAPClientKill();
    EXPECT_EQ(std::exchange(gHistory, ""), "K1K2K3K4");
  }
}

// The second host has other procedures but the same value of the unregister counter, so the counter
// alone must not make a table look fresh.
TEST(BindingTest, NothingOfTheFormerHostIsUsed) {
  static unsigned long counters[2];
  unsigned long* (*const counterAddresses[])() = {[] { return &counters[0]; },
                                                  [] { return &counters[1]; }};
  TDelVTabList<EchoInterface> tables;
  const unsigned long starts[] = {0, 1, 5, ~0ul};
  for (std::size_t i = 0; i < 2 * std::size(starts); ++i) {
    SCOPED_TRACE(i);
    const std::size_t round = i % 2;
    counters[round] = starts[i / 2];
    TestHost host;
    if (round == 0) HostTap tap(host);  // the first host alone has its procedures
    ReplaceProc<KAPBinderInterface, "KAPGetUnregisterCountAddr">(host, counterAddresses[round]);
    round == 0 ? RegisterEcho<10>(host) : RegisterEcho<20>(host);
    HostTap::Clear();
    ASSERT_TRUE(KAPClientInit(host.GetProcAddress()));
    {
      const CKAPContainerHolder container(MakeContainer("Impl"), true);
      const CKAPStringAtom joined = CKAPStringAtom("a") + CKAPStringAtom("b");
      EXPECT_TRUE(CKAPError("m", "c", 1).Matches("c", 1));
      EXPECT_EQ(EchoClient::Call<"Second">(), round == 0 ? 12 : 22);
      const KAPVTabGeneric::Slot* slots = tables.InitVTab(container.Handle());
      ASSERT_NE(slots, nullptr);
      EXPECT_EQ(slots[1], EchoProc(host, 1));
    }
    KAPClientTerminate();
    EXPECT_EQ(HostTap::TakeCalls().empty(), round == 1);
  }
}

}  // namespace
