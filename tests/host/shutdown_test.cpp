// SPDX-License-Identifier: MIT
#include <optional>

#include "TestHost.h"

// Calls without a host, as a component's static objects may make them.

namespace {

using namespace KAP_T_MT;

TEST(ShutdownTest, LateCallsDoNoHarm) {
  KAPHost::Snapshot leaked;
  const KAPHost::HostOptions options = {.fOnReport = {},
                                        .fOnLeak = [&](const auto& what) { leaked = what; }};
  std::optional<KAPHost::Host> host(std::in_place, options);
  const auto newAtom = host->Proc<KAPStringInterface, "NewStringAtom">();
  const auto text = host->Proc<KAPStringInterface, "GetCString">();
  const auto deleteAtom = host->Proc<KAPStringInterface, "DeleteStringAtom">();
  const auto alloc = host->Proc<KAPMemoryInterface, "Alloc">();
  const auto freeBlock = host->Proc<KAPMemoryInterface, "Free">();
  const auto newContainer = host->Proc<KAPContainerInterface, "NewContainer">();
  const auto addRef = host->Proc<KAPContainerInterface, "AddRef">();
  const auto release = host->Proc<KAPContainerInterface, "Release">();
  const auto find = host->GetProcAddress();

  KAPStringAtom* atom = newAtom("still held");
  void* block = alloc(10);
  KAPContainer* container = nullptr;
  newContainer(&container);
  const auto registerProc = host->Proc<KAPBinderInterface, "KAPRegisterProcAddress">();
  const auto unregister = host->Proc<KAPBinderInterface, "KAPUnregisterInterface">();
  const auto report = host->Proc<KAPBinderInterface, "KAPReportError">();
  const auto decrement = host->Proc<KAPContainerInterface, "DecrementWithoutDelete">();
  const auto deleteUnowned = host->Proc<KAPContainerInterface, "DeleteUnownedContainer">();
  const auto releaseError = host->Proc<KAPErrorInterface, "Release">();
  const auto releaseBuffer = host->Proc<KAPSharedBuffInterface, "Release">();
  KAPError* const error =
      host->Proc<KAPErrorInterface, "NewError">()("held", "c", 0, nullptr, nullptr);
  KAPSharedBuffer* const buffer =
      host->Proc<KAPSharedBuffInterface, "NewBuffer">()(8, nullptr, nullptr, nullptr, nullptr);
  host.reset();
  EXPECT_EQ(leaked.Of(KAP_T_MT::KAPResource::kAtom, "still held").fNumber, 1);

  EXPECT_EQ(newAtom("late"), nullptr);
  EXPECT_EQ(alloc(10), nullptr);
  EXPECT_FALSE(addRef(container));
  KAPContainer* late = container;
  EXPECT_NE(newContainer(&late), nullptr);
  EXPECT_EQ(late, nullptr);
  EXPECT_EQ(find("KAP", "KAPReportError", "KAPReportError"), nullptr);
  EXPECT_STREQ(text(atom), "still held");
  deleteAtom(atom);
  freeBlock(block);
  release(container);  // ignored, like the other releases
  decrement(container);
  deleteUnowned(container);
  releaseError(error);
  releaseBuffer(buffer);
  EXPECT_EQ(registerProc("I", "M", "P", &leaked), 0);
  unregister("I");
  report("lost");

  // The next host has its own accounting and destroys what could not be destroyed without one.
  host.emplace(options);
  EXPECT_TRUE(host->TakeSnapshot().IsEmpty());
  release(container);
  EXPECT_EQ(host->TakeSnapshot().Total(KAP_T_MT::KAPResource::kContainer).fNumber, -1);
  releaseError(error);
  releaseBuffer(buffer);
  EXPECT_TRUE(host->TakeReports().empty());
}

// Items of a cache belong to components, which may be unloaded.
TEST(ShutdownTest, NothingIsPurged) {
  static int purged;
  purged = 0;
  const KAPHost::HostOptions options = {.fOnReport = {}, .fOnLeak = [](const auto&) {}};
  std::optional<KAPHost::Host> host(std::in_place, options);
  using Cache = KAPCacheInterface;
  const auto release = host->Proc<Cache, "Release">();
  const auto attach = host->Proc<Cache, "Attach">();
  const auto purgeAll = host->Proc<Cache, "PurgeAll">();
  const auto purgeStatic = host->Proc<Cache, "PurgeAllStaticCaches">();
  const auto removeID = host->Proc<Cache, "RemoveID">();
  const auto removeIDs = host->Proc<Cache, "RemoveIDs">();
  const auto deleteSet = host->Proc<Cache, "DeleteCacheSet">();
  KAPCacheID* const id = host->Proc<Cache, "NewCacheID">()();
  KAPCacheSet* const set = host->Proc<Cache, "NewCacheSet">()();
  EXPECT_TRUE((host->Proc<Cache, "Add">()(id, &purged, 1, [](void*) { ++purged; })));
  EXPECT_FALSE((host->Proc<Cache, "SearchForID">()(set, id)));
  host.reset();
  EXPECT_EQ(attach(id), nullptr);
  purgeAll();
  purgeStatic();
  removeID(set, id);
  removeIDs(set);
  deleteSet(set);
  release(id);
  EXPECT_EQ(purged, 0);

  host.emplace(options);  // releases what is left
  release(id);
  EXPECT_EQ(purged, 0);  // the set holds it
  deleteSet(set);
  EXPECT_EQ(purged, 1);
}

// A component's procedures may be unloaded with it.
TEST(ShutdownTest, NothingIsForwarded) {
  static int calls;
  calls = 0;
  const KAPSinkWriteProc write = [](void*, const unsigned char*, std::size_t) -> KAPError* {
    return ++calls, nullptr;
  };
  const KAPProgressUpdateProc update = [](void*, float, const char*, int) -> KAPError* {
    return ++calls, nullptr;
  };
  const KAPSinkDeleteProc deleteClient = [](void*) -> KAPError* { return ++calls, nullptr; };
  const KAPHost::HostOptions options = {.fOnReport = {}, .fOnLeak = [](const auto&) {}};
  std::optional<KAPHost::Host> host(std::in_place, options);
  const auto writeSink = host->Proc<KAPFilterInterface, "Write">();
  const auto close = host->Proc<KAPFilterInterface, "Close">();
  const auto releaseSink = host->Proc<KAPFilterInterface, "Release">();
  const auto updateProgress = host->Proc<KAPProgressInterface, "Update">();
  const auto releaseProgress = host->Proc<KAPProgressInterface, "Release">();
  const auto memory = host->Proc<KAPErrorInterface, "GetCoreError">()(1);
  KAPDataSink* sink = nullptr;
  host->Proc<KAPFilterInterface, "NewClientDataSink">()(&sink, &calls, write, deleteClient);
  KAPProgress* const progress =
      host->Proc<KAPProgressInterface, "NewClientProgress">()(&calls, update, deleteClient);
  host.reset();
  EXPECT_EQ(writeSink(sink, nullptr, 0), memory);
  EXPECT_EQ(close(sink), memory);
  EXPECT_EQ(updateProgress(progress, 0.5f, nullptr, 0), memory);
  releaseSink(sink);
  releaseProgress(progress);
  EXPECT_EQ(calls, 0);

  host.emplace(options);  // releases what is left
  releaseSink(sink);
  releaseProgress(progress);
  EXPECT_EQ(calls, 2);
}

}  // namespace
