// SPDX-License-Identifier: MIT
#include <optional>

#include "OwnProcess.h"
#include "RuntimeTest.h"

// Objects that outlive the binding must not call the host, which may be gone.

namespace {

using namespace KAP_T_MT;

struct Holdings {
  CKAPStringAtom fAtom;
  CKAPError fError;
  KAPContainerBaseGeneric fContainer;
  std::optional<CKAPContainerHolder> fHolder;
  std::optional<CKAPCachedContainerHolder> fCached;
  TKAPBlock<char> fBlock;
  TDelVTabList<EchoInterface> fTables;
  TKAPSharedBuffer<char> fBuffer;
  std::optional<CKAPCacheLock> fLock;
  std::optional<CKAPDataSink> fSink;
  std::optional<CKAPProgress> fProgress;
  struct : CKAPStaticCacheBase {
    void Clear() override {}
    void Kill() noexcept override {}
  } fCache;

  void Fill() {
    KAPContainer* container = MakeContainer("Impl");
    fAtom = CKAPStringAtom("held");
    fError = CKAPError("held", "c", 1);
    fContainer = KAPContainerBaseGeneric(container, KAPAdopt());
    fHolder.emplace(container, false);
    fCached.emplace(container);
    fBlock = KAPNewBlock<char>(10);
    fTables.InitVTab(container);
    fBuffer = TKAPSharedBuffer<char>(1);
    const CKAPCacheID id;
    ASSERT_TRUE(CKAPCache::Add(id, this, 1, [](void*) {}));
    fLock.emplace(CKAPCache::Attach(id));
    fSink.emplace(CKAPDataSink::New());
    fProgress.emplace(CKAPProgress::New());
  }
};

enum class End { kTerminate, kKill, kExit };

void RunToTheEnd(End end, bool counterMoves, bool hostGoes) {
  static std::optional<KAPHost::Host> host;
  static std::optional<Holdings> holdings(std::in_place);
  host.emplace(KAPHost::HostOptions{.fOnReport = {}, .fOnLeak = [](const auto&) {}});
  const HostTap tap(*host);
  ASSERT_TRUE(KAPClientInit(&HostTap::GetProc));
  RegisterEcho(*host);
  holdings->Fill();
  if (end == End::kTerminate) KAPClientTerminate();
  HostTap::Forbid();
  if (end == End::kKill) KAPClientKill();
  if (end == End::kExit) std::atexit(&KAPClientKill);  // static objects are destroyed after it
  if (counterMoves) MoveCounter(*host);
  if (hostGoes) host.reset();
  if (end == End::kExit) return;
  const CKAPError copy(holdings->fError);
  EXPECT_EQ(copy.Handle(), holdings->fError.Handle());
  holdings.reset();
  EXPECT_EQ(Thrown([] { CKAPStringAtom("too late"); }), "(empty)");
}

TEST(EndingTest, NothingReachesTheHost) {
  for (const End end : {End::kTerminate, End::kKill, End::kExit}) {
    for (const bool counterMoves : {false, true}) {
      for (const bool hostGoes : {false, true}) {
        SCOPED_TRACE(testing::Message()
                     << static_cast<int>(end) << ' ' << counterMoves << ' ' << hostGoes);
        ExpectGoodExit([&] { RunToTheEnd(end, counterMoves, hostGoes); });
      }
    }
  }
}

}  // namespace
