// SPDX-License-Identifier: MIT
#include <optional>
#include <stdexcept>

#include "RuntimeTest.h"

// A component's own caches, and when the host knows of them.

namespace {

using namespace KAP_T_MT;

std::string gHistory;

// + and - stand for the host's calls "AddClientPurge" and "RemoveClientPurge".
std::string TakeHistory() {
  for (const auto& [method, text] : HostTap::TakeCalls()) {
    if (method == "AddClientPurge") gHistory += "+";
    if (method == "RemoveClientPurge") gHistory += "-";
  }
  return std::exchange(gHistory, "");
}

// A cache, and a member of LazyTerminate to show the order of the two.
struct Cache : CKAPStaticCacheBase {
  explicit Cache(const char* name, bool throws = false) : fName(name), fThrows(throws) {}
  void Clear() override {
    gHistory += "C" + fName;
    if (fThrows) throw std::runtime_error("cannot clear " + fName);
  }
  void Kill() noexcept override { gHistory += "K" + fName; }

  std::string fName;
  bool fThrows;
};

struct Member : LazyTerminate {
  bool Initialize() override {
    gHistory += CKAPStaticCacheBase::IsAccepting() ? "too late" : "I";
    return true;
  }
  void Terminate() override { gHistory += "T"; }
  void Kill() noexcept override { gHistory += "K"; }
};

struct StaticCacheTest : HostTest {
  ~StaticCacheTest() override { KAPClientTerminate(); }
  void Purge() { fHost.Call<KAPCacheInterface, "PurgeAllStaticCaches">(); }

  HostTap fTap{fHost};
};

// A cache that cannot be cleared does not keep the others from being cleared.
TEST_F(StaticCacheTest, BoundAndUnboundInOrder) {
  const Cache first("1"), second("2", true);
  const Member member;
  EXPECT_TRUE(KAPClientInit(&HostTap::GetProc));
  EXPECT_EQ(TakeHistory(), "I+");
  EXPECT_TRUE(CKAPStaticCacheBase::IsAccepting());
  Purge();
  EXPECT_EQ(TakeHistory() + fHost.TakeReport(), "C2C1cannot clear 2");
  KAPClientTerminate();
  EXPECT_EQ(TakeHistory() + fHost.TakeReport(), "C2C1T-cannot clear 2");
  EXPECT_FALSE(CKAPStaticCacheBase::IsAccepting());
  Purge();
  KAPClientKill();
  EXPECT_EQ(TakeHistory(), "K2K1K");
}

// The host knows of the caches exactly while there are any.
TEST_F(StaticCacheTest, ComingAndGoing) {
  ASSERT_TRUE(KAPClientInit(&HostTap::GetProc));
  {
    const Cache last("1");
    { const Cache between("2"), top("3"); }
    CKAPCache::PurgeAllStaticCaches();
    EXPECT_EQ(TakeHistory(), "C1+");
  }
  EXPECT_EQ(TakeHistory(), "-");
  std::optional<Cache> first("1"), second("2"), third("3");
  second.reset();  // not the one made last
  Purge();
  EXPECT_EQ(TakeHistory(), "C3C1+");
}

TEST_F(StaticCacheTest, NotAcceptedAfterAKill) {
  ASSERT_TRUE(KAPClientInit(fHost.GetProcAddress()));
  KAPClientKill();
  EXPECT_FALSE(CKAPStaticCacheBase::IsAccepting());
  { const Cache cache("1"); }
  EXPECT_EQ(TakeHistory(), "");
}

// The host is told whenever there are caches, even if the binding failed before it knew of them.
TEST_F(StaticCacheTest, AfterAFailedBinding) {
  struct Refusing : LazyTerminate {
    bool Initialize() override { return false; }
  } const refusing;
  {
    const Cache cache("1");
    EXPECT_FALSE(KAPClientInit(&HostTap::GetProc));
    EXPECT_FALSE(CKAPStaticCacheBase::IsAccepting());
    KAPClientTerminate();
    EXPECT_EQ(TakeHistory(), "C1-");
  }
  EXPECT_FALSE(KAPClientInit(&HostTap::GetProc));
  KAPClientTerminate();
  EXPECT_EQ(TakeHistory(), "");
}

TEST_F(StaticCacheTest, WithoutTheCacheInterface) {
  const Member member;
  fHost.HideInterface(KAPCacheInterface::kName);
  {
    const Cache cache("1");
    EXPECT_EQ(Thrown([] { (void)KAPClientInit(&HostTap::GetProc); }), kMissingProcedure);
    EXPECT_FALSE(CKAPStaticCacheBase::IsAccepting());
    KAPClientTerminate();  // the way back
  }
  EXPECT_EQ(TakeHistory(), "IC1T");
  ASSERT_TRUE(KAPClientInit(&HostTap::GetProc));  // not needed without a cache
  EXPECT_EQ(Thrown([] { Cache("2"); }), kMissingProcedure);
  fHost.StopFaults();
  const Cache cache("3");
  fHost.HideInterface(KAPCacheInterface::kName);
  MoveCounter(fHost);
  KAPClientTerminate();  // succeeds although the host has lost the interface
  EXPECT_EQ(TakeHistory(), "IC3T+");
}

}  // namespace
