// SPDX-License-Identifier: MIT
#include <utility>

#include "TestHost.h"

namespace {

std::string gPurged;  // the items, in the order of purging
std::function<void()> gOnPurge;

class CacheTest : public HostTest {
 protected:
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Cache(Args... args) {
    return fHost.Call<KAP_T_MT::KAPCacheInterface, Method>(args...);
  }

  void SetUp() override {
    gPurged.clear();
    gOnPurge = [] {};
    for (KAPCacheID*& id : fIDs) id = Cache<"NewCacheID">();
  }
  void TearDown() override {
    for (KAPCacheID* id : fIDs) Cache<"Release">(id);
  }
  // Adds item number i at a cost of 10.
  bool Add(int i) {
    return Cache<"Add">(fIDs[i], &fItems[i], 10ul, KAPDeleteProc([](void* item) {
                          gPurged += *static_cast<char*>(item);
                          gOnPurge();
                        }));
  }

  KAPCacheID* fIDs[4];
  char fItems[4] = {'a', 'b', 'c', 'd'};
};

// An identity has one item; calls for another one do nothing. The procedure that purges is
// optional.
TEST_F(CacheTest, OnlyTheItemOfTheIdentity) {
  EXPECT_TRUE(Add(0));
  EXPECT_TRUE(Cache<"Add">(fIDs[1], &fItems[1], 10ul, nullptr));
  EXPECT_TRUE(Cache<"Add">(fIDs[2], &fItems[2], 10ul, nullptr));
  EXPECT_FALSE(Cache<"MarkNoPurge">(fIDs[0], &fItems[1]));
  EXPECT_EQ(Cache<"ReturnCost">(fIDs[0], &fItems[1]), 0u);
  Cache<"UpdateCost">(fIDs[0], &fItems[1], 99ul);
  EXPECT_EQ(Cache<"CurrentCacheSize">(), 30u);
  EXPECT_TRUE(Cache<"MarkNoPurge">(fIDs[0], &fItems[0]));
  Cache<"MarkPurge">(fIDs[0], &fItems[1]);
  Cache<"Release">(std::exchange(fIDs[2], nullptr));
  Cache<"PurgeAll">();
  EXPECT_EQ(gPurged, "");
  EXPECT_EQ(Cache<"CurrentCacheSize">(), 10u);
  Cache<"MarkPurge">(fIDs[0], &fItems[0]);
  Cache<"MarkPurge">(fIDs[0], &fItems[0]);  // one more than there were marks
  Cache<"PurgeAll">();
  EXPECT_EQ(gPurged, "a");
}

TEST_F(CacheTest, LeastRecentlyUsedFirst) {
  const unsigned long before = Cache<"GetCacheTime">();
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(Add(i));
  EXPECT_EQ(Cache<"GetCacheTime">(), before + 4);
  EXPECT_FALSE(Add(0));
  for (int i : {0, 1, 1}) EXPECT_EQ(Cache<"Attach">(fIDs[i]), &fItems[i]);
  Cache<"MarkPurge">(fIDs[0], &fItems[0]);  // used last
  Cache<"MarkPurge">(fIDs[1], &fItems[1]);  // still marked once
  EXPECT_FALSE(Cache<"MarkNoPurge">(fIDs[1], &fItems[0]));
  Cache<"UpdateCost">(fIDs[1], &fItems[1], 5ul);
  EXPECT_EQ(Cache<"ReturnCost">(fIDs[1], &fItems[1]), 5u);
  EXPECT_EQ(Cache<"CurrentCacheSize">(), 35u);
  KAPCachePurge* const purge = Cache<"NewCachePurge">();
  EXPECT_EQ(fHost.TakeSnapshot().Describe(),
            "cache identities: 4 (4 references)\ncached items: 4 (cost 35)\ncache purges: 1\n");
  gOnPurge = [this] { Add(2); };  // an item used after the purge began is left alone
  while (Cache<"PurgeNextBlock">(purge)) {
  }
  Cache<"DeleteCachePurge">(purge);
  EXPECT_EQ(gPurged, "cda");
  gOnPurge = [] {};
  EXPECT_EQ(Cache<"Attach">(fIDs[3]), nullptr);
  Cache<"Release">(std::exchange(fIDs[1], nullptr));  // marked or not
  Cache<"PurgeAll">();
  EXPECT_EQ(gPurged, "cdabc");
}

// Costs whose sum overflows are allowed; the accounting stays balanced.
TEST_F(CacheTest, HugeCosts) {
  for (int i = 0; i < 4; ++i) {
    EXPECT_TRUE(Add(i));
    for (const std::size_t cost : {~0ul >> 1, ~0ul, 0ul, 1ul << 63}) {
      Cache<"UpdateCost">(fIDs[i], &fItems[i], cost);
      EXPECT_EQ(Cache<"ReturnCost">(fIDs[i], &fItems[i]), cost);
      EXPECT_EQ(fHost.TakeSnapshot().Total(KAP_T_MT::KAPResource::kCacheItem).fNumber, i + 1);
    }
  }
  Cache<"PurgeAll">();
  EXPECT_EQ(Cache<"CurrentCacheSize">(), 0u);
  EXPECT_EQ(fHost.TakeSnapshot().Describe(), "cache identities: 4 (4 references)\n");
}

const TestHost* gPurgeHost;
int gPurgeCalls;
void PurgeFirst();
void PurgeSecond();
constexpr KAP_T_MT::KAPClientPurgeProc kClientPurges[] = {&PurgeFirst, &PurgeSecond};
void RemoveOther(KAP_T_MT::KAPClientPurgeProc other) {
  ++gPurgeCalls;
  gPurgeHost->Call<KAP_T_MT::KAPCacheInterface, "RemoveClientPurge">(other, 0);
}
void PurgeFirst() { RemoveOther(&PurgeSecond); }
void PurgeSecond() { RemoveOther(&PurgeFirst); }

// The first of two client purges to be called removes the other, as by unloading its component.
TEST_F(CacheTest, ClientPurges) {
  gPurgeHost = &fHost;
  gPurgeCalls = 0;
  for (const auto purge : kClientPurges) Cache<"AddClientPurge">(purge, 0);
  for (int expected : {1, 2}) {
    Cache<"PurgeAllStaticCaches">();
    EXPECT_EQ(gPurgeCalls, expected);
  }
  for (const auto purge : kClientPurges) Cache<"RemoveClientPurge">(purge, 0);
  Cache<"PurgeAllStaticCaches">();
  EXPECT_EQ(gPurgeCalls, 2);
}

TEST_F(CacheTest, Sets) {
  KAPCacheSet* const set = Cache<"NewCacheSet">();
  EXPECT_TRUE(Add(0) && Add(1));
  for (KAPCacheID* id : fIDs) EXPECT_FALSE(Cache<"SearchForID">(set, id));
  EXPECT_TRUE(Cache<"SearchForID">(set, fIDs[1]));
  Cache<"Release">(fIDs[1]);
  EXPECT_EQ(gPurged, "");
  Cache<"RemoveID">(set, std::exchange(fIDs[1], nullptr));
  EXPECT_EQ(gPurged, "b");
  for (int i = 0; i < 2; ++i) Cache<"RemoveID">(set, fIDs[2]);
  EXPECT_FALSE(Cache<"SearchForID">(set, fIDs[2]));
  Cache<"DeleteCacheSet">(set);
}

}  // namespace
