#include <cstdio>
#include <optional>

#include "RuntimeTest.h"

// What the host lends: shared buffers, streams, cached items, data blocks.

namespace {

using namespace KAP_T_MT;
using KAP_T_MT::KAPFault;

int gDeleted = 0;
void Delete(void*) { ++gDeleted; }

struct ResourceTest : BoundTest {
  ResourceTest() { gDeleted = 0; }
};

TEST_F(ResourceTest, SharedBuffers) {
  TKAPSharedBuffer<long> buffer(3), copy(buffer), moved(std::move(buffer));
  buffer = TKAPSharedBuffer<long>(copy.Detach(), KAPAdopt());
  moved.Data()[2] += 9;
  EXPECT_EQ(buffer.Data()[2], 9);
  EXPECT_EQ(buffer.Size(), 3u);
  EXPECT_EQ(copy.Size(), 0u);
  EXPECT_EQ(Thrown([] { TKAPSharedBuffer<long>(~std::size_t{0} / 8 + 1); }), kOverflow);
}

TEST_F(ResourceTest, SharedBuffersAfterTheTableWasDropped) {
  std::optional<TKAPSharedBuffer<char>> ignored(std::size_t{4}), released(std::size_t{4});
  KAPSharedBuffer* const handle = ignored->Handle();
  CKAPSharedBuff::Close();
  HostTap::Clear();
  ignored.reset();
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  CKAPSharedBuff::Init();
  released.reset();
  TKAPSharedBuffer<char>(handle, KAPAdopt());  // the reference that was ignored
  EXPECT_EQ(HostTap::TakeCalls(), (Log{{"Release", ""}, {"Release", ""}}));
}

// The caller's data is given back exactly once, whatever happens.
TEST_F(ResourceTest, CallersBuffers) {
  char data[4];
  { TKAPSharedBuffer<char>(CKAPSharedBuff::NewBuffer(4, data, &Delete), KAPAdopt()); }
  EXPECT_EQ(gDeleted, 1);
  fHost.FailFrom(KAPFault::kBuffer, 1);
  EXPECT_EQ(Thrown([&] { CKAPSharedBuff::NewBuffer(4, data, &Delete); }), kBadAlloc);
  EXPECT_EQ(Thrown([&] { CKAPSharedBuff::NewBuffer(4, data); }), kBadAlloc);
  EXPECT_EQ(Thrown([&] { CKAPSharedBuff::NewBuffer(4, nullptr, &Delete); }), kBadAlloc);
  EXPECT_EQ(gDeleted, 2);
  fHost.HideInterface(KAPSharedBuffInterface::kName);
  MoveCounter(fHost);
  EXPECT_EQ(Thrown([&] { CKAPSharedBuff::NewBuffer(4, data, &Delete); }), kMissingProcedure);
  EXPECT_EQ(gDeleted, 3);
}

TEST_F(ResourceTest, Streams) {
  const std::string path = testing::TempDir() + "kap_stream_" + std::to_string(getpid());
  for (const bool inFile : {false, true}) {
    CKAPPositionableStream stream =
        inFile ? CKAPPositionableStream(path.c_str(), "w+") : CKAPPositionableStream();
    unsigned char bytes[] = "hello";
    stream.Write(bytes, 5);
    EXPECT_EQ(stream.Mark(), 5);
    stream.Rewind();
    CKAPPositionableStream independent = stream.CreateIndependentlyPositionableStream();
    stream.Seek(-2, kKAPSeekFromEnd);
    EXPECT_EQ(CKAPPositionableStream(stream.Handle()).Read(bytes, 6), 2u);
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes), "lollo");
    EXPECT_EQ(independent.Mark(), 0);
  }
  std::remove(path.c_str());
  EXPECT_NE(Thrown([&] { CKAPPositionableStream(path.c_str(), "r"); }), "");
  fHost.HideInterface(KAPStreamFactoryInterface::kName);
  MoveCounter(fHost);
  EXPECT_EQ(Thrown([] { CKAPPositionableStream(); }), kInvalidContainer);
}

TEST_F(ResourceTest, LockedItemsStay) {
  CKAPCacheID id;
  ASSERT_TRUE(CKAPCache::Add(id, this, 10, &Delete));
  CKAPCacheLock lock = CKAPCache::Attach(id);
  lock.UpdateCost(20);
  EXPECT_EQ(lock.ReturnCost(), 20u);
  std::optional<CKAPCacheLock> copy(lock);
  lock = CKAPCacheLock(KAPInvalid());
  EXPECT_TRUE(CKAPCacheLock(id, copy->Item()));
  CKAPCache::PurgeAll();
  EXPECT_EQ(gDeleted, 0);
  copy.reset();
  CKAPCache::PurgeAll();
  EXPECT_EQ(gDeleted, 1);
  EXPECT_FALSE(CKAPCache::Attach(id) || CKAPCacheLock(id, this));
  fHost.FailFrom(KAPFault::kCache, 1);
  EXPECT_EQ(Thrown([] { CKAPCacheID(); }), "couldn't create cacheID||0");
}

// A store of its own text, which counts what comes back.
KAPError* LendBlock(KAPDataBlock* out, KAPDataStore*, std::size_t offset) {
  if (offset > 6) return CKAPError(kMemErrorID).Detach();
  *out = CKAPDataBlockPtr(&"stored"[offset], 6 - offset, nullptr, &Delete).Detach();
  return nullptr;
}

TEST_F(ResourceTest, DataBlocks) {
  fHost.RegisterInterface<KAPDataStoreInterface>(&LendBlock);
  const CKAPStringAtom name("Store"), interfaceName(KAPDataStoreInterface::kName);
  CKAPDataStore store(CKAPContainer::NewFullContainer(nullptr, name, interfaceName, nullptr),
                      KAPAdopt());
  {
    CKAPDataBlockPtr block = store.GetBlock(2), other(std::move(block));
    EXPECT_EQ(other.Text(), "ored");
    EXPECT_EQ(Thrown([&] { store.GetBlock(7); }), kOutOfMemory);
    EXPECT_EQ(gDeleted, 0);
  }
  EXPECT_EQ(gDeleted, 1);
  EXPECT_EQ(Thrown([&] { CKAPSizedDataStore sized(store.Handle()); }), kInvalidContainer);
}

}  // namespace
