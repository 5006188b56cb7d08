// SPDX-License-Identifier: MIT
#include <gtest/gtest-spi.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "TestHost.h"

// The leak report itself: it must name everything that is held too long.

namespace {

using KAP_T_MT::KAPResource;
using KAPHost::Holding;
using KAPHost::Snapshot;

class AccountingTest : public ::testing::Test {
 protected:
  AccountingTest() { fHost = std::make_unique<KAPHost::Host>(Collecting()); }

  KAPHost::HostOptions Collecting() {
    return {.fOnReport = {}, .fOnLeak = [this](const Snapshot& leaked) { fLeaked = leaked; }};
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Strings(Args... args) {
    return fHost->Proc<KAP_T_MT::KAPStringInterface, Method>()(args...);
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Containers(Args... args) {
    return fHost->Proc<KAP_T_MT::KAPContainerInterface, Method>()(args...);
  }
  KAPContainer* NewContainer(const char* implementation) {
    KAPStringAtom* atom = Strings<"NewStringAtom">(implementation);
    KAPContainer* container = nullptr;
    Containers<"NewFullContainer">(&container, this, atom, atom, nullptr);
    Strings<"DeleteStringAtom">(atom);
    return container;
  }
  // Destroys the host and returns its leak report.
  std::string ShutDown() {
    fLeaked = {};
    fHost.reset();
    return fLeaked.Describe();
  }
  // Makes another host, to which deliberate leaks can be released.
  void Restart() {
    fHost.reset();
    fHost = std::make_unique<KAPHost::Host>(Collecting());
  }

  Snapshot fLeaked;  // set when the host is destroyed
  std::unique_ptr<KAPHost::Host> fHost;
};

TEST_F(AccountingTest, LeaksAreNamedAtShutdown) {
  using Errors = KAP_T_MT::KAPErrorInterface;
  using Memory = KAP_T_MT::KAPMemoryInterface;
  KAPStringAtom* atom = Strings<"NewStringAtom">("leaked atom");
  Strings<"AddRef">(atom);
  KAPContainer* container = NewContainer("LeakedImpl");
  KAPError* error = fHost->Proc<Errors, "NewError">()("leaked error", "c", 1, nullptr, nullptr);
  void* block = fHost->Proc<Memory, "Alloc">()(1000);
  const std::string leaks = ShutDown();
  for (const char* leak :
       {"atom \"leaked atom\": 2 references\n", "container \"LeakedImpl\": 1 (1 reference)\n",
        "error \"leaked error\": 1 (1 reference)\n", "blocks: 1 (10"}) {
    EXPECT_NE(leaks.find(leak), std::string::npos) << leaks;
  }
  Restart();
  for (int i = 0; i < 2; ++i) Strings<"DeleteStringAtom">(atom);
  Containers<"Release">(container);
  fHost->Proc<Errors, "Release">()(error);
  fHost->Proc<Memory, "Free">()(block);
}

TEST_F(AccountingTest, SnapshotsShowWhatChanged) {
  KAPStringAtom* kept = Strings<"NewStringAtom">("kept");
  KAPContainer* container = NewContainer("kept");
  const Snapshot before = fHost->TakeSnapshot();
  Strings<"AddRef">(kept);
  Containers<"AddRef">(container);
  const Snapshot after = fHost->TakeSnapshot();
  EXPECT_EQ((after - before).Describe(),
            "atom \"kept\": 1 reference\ncontainer \"kept\": 0 (1 reference)\n");
  EXPECT_EQ((before - after).Of(KAPResource::kAtom, "kept"), (Holding{-1, 0}));
  EXPECT_TRUE((before - after).Gained().IsEmpty());
  EXPECT_EQ((after - before).Gained(), after - before);

  Strings<"DeleteStringAtom">(kept);
  Containers<"Release">(container);
  EXPECT_EQ(fHost->TakeSnapshot(), before);
  Strings<"DeleteStringAtom">(kept);
  Containers<"Release">(container);
  EXPECT_EQ(testing::PrintToString(fHost->TakeSnapshot()), "nothing");
}

// Each step changes what is held by one number of one thing.
TEST_F(AccountingTest, DigestsStandForSnapshots) {
  std::vector<Snapshot> snapshots;
  std::vector<std::uint64_t> digests;
  const auto take = [&] {
    snapshots.push_back(fHost->TakeSnapshot());
    digests.push_back(fHost->TakeDigest());
  };
  take();
  KAPStringAtom* const a = Strings<"NewStringAtom">("a");
  take();
  KAPStringAtom* const b = Strings<"NewStringAtom">("b");
  take();
  Strings<"AddRef">(a);
  take();
  Strings<"DeleteStringAtom">(a);
  Strings<"AddRef">(b);
  take();
  KAPContainer* const container = NewContainer("a");
  take();
  Containers<"AddRef">(container);
  take();
  Containers<"Release">(container);
  Strings<"DeleteStringAtom">(b);
  take();
  Strings<"DeleteStringAtom">(b);
  Containers<"Release">(container);
  Strings<"DeleteStringAtom">(a);
  take();
  for (std::size_t i = 0; i < digests.size(); ++i) {
    for (std::size_t j = 0; j < digests.size(); ++j) {
      EXPECT_EQ(digests[i] == digests[j], snapshots[i] == snapshots[j]) << i << ' ' << j;
    }
  }
  EXPECT_EQ(digests.front(), 0u);
  EXPECT_EQ(digests.back(), 0u);
}

// More types than the accounting distinguishes: none is lost, and the next host has all slots.
TEST_F(AccountingTest, ManyTypes) {
  for (int round = 0; round < 2; ++round) {
    std::vector<KAPContainer*> containers;
    for (int i = 0; i < 300; ++i) {
      containers.push_back(NewContainer(("Type" + std::to_string(i)).c_str()));
    }
    EXPECT_EQ(fHost->TakeSnapshot().Total(KAPResource::kContainer), (Holding{300, 300}));
    EXPECT_EQ(fHost->TakeSnapshot().Of(KAPResource::kContainer, "Type0"), (Holding{1, 1}));
    for (KAPContainer* container : containers) Containers<"Release">(container);
    EXPECT_EQ(ShutDown(), "");
    Restart();
  }
}

KAPStringAtom* gAtom;
void (*gDeleteAtom)(KAPStringAtom*);

void LeakInAHost() {
  TestHost host;
  gDeleteAtom = host.Proc<KAP_T_MT::KAPStringInterface, "DeleteStringAtom">();
  gAtom = host.Atom("x");
}

void LeakInAScope() {
  TestHost host;
  {
    const BalancedScope scope(host);
    gAtom = host.Atom("y");
  }
  gDeleteAtom(gAtom);
}

void LeaveAReport() {
  TestHost host;
  host.Call<KAP_T_MT::KAPBinderInterface, "KAPReportError">("surprise");
}

TEST(TestHostTest, FailsTests) {
  EXPECT_NONFATAL_FAILURE(LeakInAHost(), "atom \"x\": 1 reference");
  gDeleteAtom(gAtom);
  EXPECT_NONFATAL_FAILURE(LeakInAScope(), "atom \"y\": 1 reference");
  EXPECT_NONFATAL_FAILURE(LeaveAReport(), "surprise");
}

}  // namespace
