#include <gtest/gtest-spi.h>

#include <memory>

#include "TestHost.h"

// The balance check itself: whatever is held too long must be named.

namespace {

using KAPHost::Holding;
using KAPHost::Kind;
using KAPHost::Snapshot;

class BooksTest : public ::testing::Test {
 protected:
  BooksTest() { fHost = std::make_unique<KAPHost::Host>(Collecting()); }

  KAPHost::HostOptions Collecting() {
    return {.fOnReport = {}, .fOnLeak = [this](const Snapshot& leaked) { fLeaked = leaked; }};
  }
  template <class Interface, KAP_T_MT::TKAPName Method, class... Args>
  auto Call(Args... args) {
    return fHost->Proc<Interface, Method>()(args...);
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Strings(Args... args) {
    return Call<KAP_T_MT::KAPStringInterface, Method>(args...);
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Containers(Args... args) {
    return Call<KAP_T_MT::KAPContainerInterface, Method>(args...);
  }
  // What the host says when it goes.
  std::string ShutDown() {
    fLeaked = {};
    fHost.reset();
    return fLeaked.Describe();
  }
  // Another host, to which what was leaked on purpose can be given back.
  void Restart() {
    fHost.reset();
    fHost = std::make_unique<KAPHost::Host>(Collecting());
  }

  Snapshot fLeaked;  // the host writes it when it goes
  std::unique_ptr<KAPHost::Host> fHost;
};

TEST_F(BooksTest, LeaksAreNamedAtShutdown) {
  KAPStringAtom* atom = Strings<"NewStringAtom">("leaked atom");
  Strings<"AddRef">(atom);
  EXPECT_EQ(ShutDown(), "atom \"leaked atom\": 2 references\n");
  Restart();
  Strings<"DeleteStringAtom">(atom);
  Strings<"DeleteStringAtom">(atom);

  Restart();
  KAPStringAtom* impl = Strings<"NewStringAtom">("LeakedImpl");
  KAPContainer* container = nullptr;
  Containers<"NewFullContainer">(&container, this, impl, impl, nullptr);
  Strings<"DeleteStringAtom">(impl);
  EXPECT_EQ(ShutDown(), "container \"LeakedImpl\": 1 (1 reference)\n");
  Restart();
  Containers<"Release">(container);

  Restart();
  KAPError* error =
      Call<KAP_T_MT::KAPErrorInterface, "NewError">("leaked error", "c", 1L, nullptr, nullptr);
  EXPECT_EQ(ShutDown(), "error \"leaked error\": 1 (1 reference)\n");
  Restart();
  Call<KAP_T_MT::KAPErrorInterface, "Release">(error);

  Restart();
  void* block = Call<KAP_T_MT::KAPMemoryInterface, "Alloc">(1000ul);
  EXPECT_EQ(ShutDown().rfind("blocks: 1 (10", 0), 0u) << fLeaked;
  Restart();
  Call<KAP_T_MT::KAPMemoryInterface, "Free">(block);
}

TEST_F(BooksTest, NothingHeldNothingSaid) {
  Strings<"DeleteStringAtom">(Strings<"NewStringAtom">("given back"));
  fLeaked.Add(Kind::kAtom, "not reset", {1, 0});
  fHost.reset();
  EXPECT_EQ(fLeaked.Of(Kind::kAtom, "not reset").fNumber, 1);  // the callback was not called
}

TEST_F(BooksTest, SnapshotsTellWhatChanged) {
  KAPStringAtom* kept = Strings<"NewStringAtom">("kept");
  KAPContainer* container = nullptr;
  Containers<"NewFullContainer">(&container, this, kept, nullptr, nullptr);
  const Snapshot before = fHost->TakeSnapshot();
  EXPECT_EQ(before, fHost->TakeSnapshot());

  Strings<"AddRef">(kept);
  Containers<"AddRef">(container);
  const Snapshot after = fHost->TakeSnapshot();
  EXPECT_FALSE(before == after);
  EXPECT_EQ((after - before).Describe(),
            "atom \"kept\": 1 reference\ncontainer \"kept\": 0 (1 reference)\n");
  EXPECT_EQ((before - after).Of(Kind::kAtom, "kept"), (Holding{-1, 0}));

  Strings<"DeleteStringAtom">(kept);
  Containers<"Release">(container);
  EXPECT_EQ(fHost->TakeSnapshot(), before);
  Strings<"DeleteStringAtom">(kept);
  Containers<"Release">(container);
  EXPECT_TRUE(fHost->TakeSnapshot().IsEmpty()) << fHost->TakeSnapshot();
}

// More types than the books tell apart: none is lost, and their slots are free again for the next
// host.
TEST_F(BooksTest, ManyTypes) {
  for (int round = 0; round < 2; ++round) {
    std::vector<KAPContainer*> containers(300);
    for (std::size_t i = 0; i < containers.size(); ++i) {
      KAPStringAtom* impl = Strings<"NewStringAtom">(("Type" + std::to_string(i)).c_str());
      Containers<"NewFullContainer">(&containers[i], this, impl, impl, nullptr);
      Strings<"DeleteStringAtom">(impl);
    }
    EXPECT_EQ(fHost->TakeSnapshot().Total(Kind::kContainer), (Holding{300, 300}));
    EXPECT_EQ(fHost->TakeSnapshot().Of(Kind::kContainer, "Type0"), (Holding{1, 1}));
    for (KAPContainer* container : containers) Containers<"Release">(container);
    EXPECT_EQ(ShutDown(), "");
    Restart();
  }
}

void LeakInATestHost(void (*leak)(TestHost&)) {
  TestHost host;
  leak(host);
}

TEST(TestHostTest, FindsFault) {
  static KAPStringAtom* atom;
  static void (*deleteAtom)(KAPStringAtom*);
  EXPECT_NONFATAL_FAILURE(LeakInATestHost([](TestHost& host) {
                            atom = host.Atom("x");
                            deleteAtom =
                                host.Proc<KAP_T_MT::KAPStringInterface, "DeleteStringAtom">();
                          }),
                          "atom \"x\": 1 reference");
  deleteAtom(atom);
  EXPECT_NONFATAL_FAILURE(LeakInATestHost([](TestHost& host) {
                            reinterpret_cast<void (*)(const char*)>(
                                host.Find("KAP", "KAPReportError", "KAPReportError"))("surprise");
                          }),
                          "surprise");
  EXPECT_NONFATAL_FAILURE(LeakInATestHost([](TestHost& host) {
                            {
                              const BalancedScope scope(host);
                              atom = host.Atom("y");
                            }
                            deleteAtom(atom);
                          }),
                          "atom \"y\": 1 reference");
}

}  // namespace
