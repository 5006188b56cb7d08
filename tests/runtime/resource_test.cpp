// SPDX-License-Identifier: MIT
#include <cstdio>
#include <optional>

#include "RuntimeTest.h"

// Wrappers of the host's resources: shared buffers, streams, cached items, data stores.

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
  EXPECT_EQ(copy.Data(), nullptr);
  EXPECT_EQ(Thrown([] { TKAPSharedBuffer<long>(~std::size_t{0} / 8 + 1); }), kOverflow);
  EXPECT_EQ(Thrown([] { TKAPSharedBuffer<char>(-1); }), kOverflow);
  EXPECT_TRUE(TKAPSharedBuffer<char>(0));  // a buffer of no bytes, not a null handle
}

TEST_F(ResourceTest, SharedBuffersAfterTheTableWasDropped) {
  std::optional<TKAPSharedBuffer<char>> ignored(std::size_t{4}), released(std::size_t{4});
  KAPSharedBuffer* const handle = ignored->Handle();
  CKAPSharedBuff::Close();
  HostTap::Clear();
  ignored.reset();
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  CKAPSharedBuff::Init();
  MoveCounter(fHost);
  HostTap::TakeLookUps();
  released.reset();
  EXPECT_EQ(HostTap::TakeLookUps().size(), KAPSharedBuffInterface::kCount);  // as before Close
  TKAPSharedBuffer<char>(handle, KAPAdopt());  // the reference that was ignored
  EXPECT_EQ(HostTap::TakeCalls(), (Log{{"Release", ""}, {"Release", ""}}));
}

// The caller's data is released exactly once, whatever happens.
TEST_F(ResourceTest, CallersBuffers) {
  char data[4];
  { TKAPSharedBuffer<char>(CKAPSharedBuff::NewBuffer(4, data, &Delete), KAPAdopt()); }
  EXPECT_EQ(gDeleted, 1);
  fHost.FailFrom(KAPFault::kBuffer, 1);
  EXPECT_EQ(Thrown([&] { (void)CKAPSharedBuff::NewBuffer(4, data, &Delete); }), kBadAlloc);
  EXPECT_EQ(Thrown([&] { (void)CKAPSharedBuff::NewBuffer(4, data); }), kBadAlloc);
  EXPECT_EQ(Thrown([&] { (void)CKAPSharedBuff::NewBuffer(4, nullptr, &Delete); }), kBadAlloc);
  EXPECT_EQ(gDeleted, 2);
  fHost.HideInterface(KAPSharedBuffInterface::kName);
  MoveCounter(fHost);
  EXPECT_EQ(Thrown([&] { (void)CKAPSharedBuff::NewBuffer(4, data, &Delete); }), kMissingProcedure);
  EXPECT_EQ(gDeleted, 3);
}

TEST_F(ResourceTest, BufferArgumentsReachTheHost) {
  static std::vector<const void*> arguments;
  ReplaceProc<KAPSharedBuffInterface, "NewBuffer">(
      fHost, [](std::size_t size, void* data, KAPDeleteProc deleteProc, KAPGrowProc growProc,
                void* clientData) {
        arguments = {reinterpret_cast<void*>(size), data, reinterpret_cast<void*>(deleteProc),
                     reinterpret_cast<void*>(growProc), clientData};
        return static_cast<KAPSharedBuffer*>(nullptr);
      });
  MoveCounter(fHost);
  const KAPGrowProc grow = [](void* data, std::size_t, void*) { return data; };
  EXPECT_EQ(Thrown([&] { (void)CKAPSharedBuff::NewBuffer(9, this, &Delete, grow, &fHost); }),
            kBadAlloc);
  EXPECT_EQ(arguments, (std::vector<const void*>{reinterpret_cast<void*>(9), this,
                                                 reinterpret_cast<void*>(&Delete),
                                                 reinterpret_cast<void*>(grow), &fHost}));
}

TEST_F(ResourceTest, BuffersOverHostMemory) {
  TKAPBlock<long> block = KAPNewBlock<long>(2);
  block[1] = 7;
  void* const data = block.get();
  const TKAPSharedBuffer<long> buffer(
      CKAPSharedBuff::NewBuffer(2 * sizeof(long), data, &KAPDeleteSharedBuff), KAPAdopt());
  static_cast<void>(block.release());  // the buffer owns it now
  EXPECT_EQ(buffer.Data(), data);
  EXPECT_EQ(buffer.Data()[1], 7);
}

TEST_F(ResourceTest, Streams) {
  const std::string path = testing::TempDir() + "kap_stream_" + std::to_string(getpid());
  for (const bool inFile : {false, true}) {
    CKAPPositionableStream stream =
        inFile ? CKAPPositionableStream(path, "w+") : CKAPPositionableStream();
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
  const unsigned char source[] = {1, 2, 3};
  CKAPPositionableStream copy(CKAPStreamFactory::NewPositionableBufferStream(source, 3),
                              KAPAdopt());
  unsigned char bytes[4] = {};
  EXPECT_EQ(copy.Read(bytes, 4), 3u);
  EXPECT_EQ(bytes[2], 3);
  EXPECT_NE(Thrown([&] { copy.Write(source, 1); }), "");
  EXPECT_NE(Thrown([&] { CKAPPositionableStream(path.c_str(), "r"); }), "");
  for (auto* open : {+[](std::string_view name) { CKAPPositionableStream(name, "r"); },
                     +[](std::string_view name) {
                       (void)CKAPStreamFactory::NewPositionableFileStream(name, "r");
                     }}) {
    EXPECT_EQ(Thrown([=] { open(std::string_view("a\0b", 3)); }), "a text cannot hold a zero byte");
  }
  fHost.HideInterface(KAPStreamFactoryInterface::kName);
  MoveCounter(fHost);
  EXPECT_EQ(Thrown([] { CKAPPositionableStream(); }), kInvalidContainer);
}

// Each class makes a stream from a client object, and adopts what a maker returns.
TEST_F(ResourceTest, NewStreams) {
  const unsigned char source[] = {1, 2, 3};
  unsigned char bytes[4] = {};
  EXPECT_EQ(CKAPPositionableStream::New().Mark(), 0);
  EXPECT_EQ(CKAPPositionableStream::New(source, 3).Read(bytes, 4), 3u);
  EXPECT_EQ(CKAPSimpleStream(CKAPStreamFactory::NewPositionableMemoryStream()).Read(bytes, 4), 0u);
  struct Ones : KAPClientPositionableStream {
    std::size_t Read(unsigned char* buffer, std::size_t) override { return *buffer = 1; }
    void Write(const unsigned char*, std::size_t) override {}
    void Seek(long, int) override {}
    long Mark() override { return 0; }
  };
  EXPECT_EQ(CKAPSimpleStream(KAPNewClient<Ones>()).Read(bytes, 4), 1u);
  EXPECT_EQ(CKAPRewindableStream(KAPNewClient<Ones>()).Read(bytes, 4), 1u);
  EXPECT_EQ(CKAPPositionableStream(KAPNewClient<Ones>()).Read(bytes, 4), 1u);
  EXPECT_EQ(Thrown([] { CKAPPositionableStream{TKAPClientObject<Ones>()}; }), kUnknown);
  EXPECT_TRUE(CKAPFilter().IsNull() && CKAPFilterJPEG().IsNull());
  fHost.HideInterface(KAPStreamFactoryInterface::kName);
  MoveCounter(fHost);
  EXPECT_EQ(Thrown([] { CKAPSimpleStream{KAPNewClient<Ones>()}; }), kInvalidContainer);
}

TEST_F(ResourceTest, CachesStepByStep) {
  const CKAPCacheID first = CKAPCacheID::New(), second(CKAPCache::NewCacheID());
  ASSERT_TRUE(CKAPCache::Add(first, this, 1, &Delete));
  ASSERT_TRUE(CKAPCache::Add(second, this, 1, &Delete));
  const unsigned long before = CKAPCache::GetCacheTime();
  EXPECT_TRUE(CKAPCache::Attach(first));  // used last, so purged last
  EXPECT_GT(CKAPCache::GetCacheTime(), before);
  {
    CKAPCachePurge purge = CKAPCachePurge::New();
    EXPECT_TRUE(purge.PurgeNextBlock());
    EXPECT_EQ(gDeleted, 1);
    EXPECT_FALSE(CKAPCache::Attach(second));
    CKAPCachePurge moved(std::move(purge));
    EXPECT_TRUE(moved.PurgeNextBlock());
    EXPECT_FALSE(moved.PurgeNextBlock() || purge.PurgeNextBlock());
    purge = std::move(moved);
  }
  CKAPCacheSet set = CKAPCacheSet::New(), same(set), none;
  EXPECT_FALSE(set.SearchForID(first));  // added
  EXPECT_TRUE(same.SearchForID(first));
  set.RemoveID(first);
  EXPECT_FALSE(same.SearchForID(first));
  set.RemoveIDs();
  EXPECT_FALSE(same.SearchForID(first) || none.SearchForID(first));
  HostTap::Clear();
  none.RemoveID(first);
  none.RemoveIDs();
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  fHost.FailFrom(KAPFault::kCache, 1);
  EXPECT_EQ(Thrown([] { (void)CKAPCachePurge::New(); }), kBadAlloc);
  EXPECT_EQ(Thrown([] { (void)CKAPCacheSet::New(); }), kBadAlloc);
  EXPECT_EQ(Thrown([] { (void)CKAPCacheID::New(); }), "couldn't create cacheID||0");
}

// As with identities, a handle is added or adopted; a mark also.
TEST_F(ResourceTest, LocksFromHandles) {
  CKAPCacheID id = CKAPCacheID::New();
  ASSERT_TRUE(CKAPCache::Add(id, this, 1, &Delete));
  const auto marked = [&] {
    return TKAPInterfaceClient<KAPCacheInterface>::Call<"Attach">(id.Handle());
  };
  const auto reference = [&] { return CKAPCacheID(id).Detach(); };
  {
    const CKAPCacheLock locks[] = {{id.Handle(), this},
                                   {reference(), this, KAPAdopt()},
                                   {id.Handle(), marked(), KAPAlreadyMarked()},
                                   {reference(), marked(), KAPAdopt(), KAPAlreadyMarked()}};
    CKAPCache::PurgeAll();
    for (const CKAPCacheLock& lock : locks) EXPECT_EQ(lock.Item(), this);
    EXPECT_EQ(gDeleted, 0);
  }
  CKAPCache::PurgeAll();
  EXPECT_EQ(gDeleted, 1);
  EXPECT_FALSE(CKAPCacheLock(id.Handle(), this));
}

TEST_F(ResourceTest, LockedItemsStay) {
  CKAPCacheID id;
  ASSERT_TRUE(CKAPCache::Add(id, this, 10, &Delete));
  CKAPCacheLock lock = CKAPCache::Attach(id);
  lock.UpdateCost(20);
  EXPECT_EQ(lock.ReturnCost(), 20u);
  EXPECT_EQ(CKAPCache::CurrentCacheSize(), 20u);
  std::optional<CKAPCacheLock> copy(lock);
  lock = CKAPCacheLock(KAPInvalid());
  EXPECT_TRUE(CKAPCacheLock(id, copy->Item()));
  HostTap::Clear();
  CKAPCacheLock(id, nullptr).UpdateCost(5);
  EXPECT_EQ(lock.ReturnCost(), 0u);
  EXPECT_EQ(HostTap::TextsOf("MarkNoPurge"), std::vector<std::string>());
  CKAPCache::PurgeAll();
  EXPECT_EQ(gDeleted, 0);
  copy.reset();
  CKAPCache::PurgeAll();
  EXPECT_EQ(gDeleted, 1);
  EXPECT_FALSE(CKAPCache::Attach(id) || CKAPCacheLock(id, this));
  fHost.FailFrom(KAPFault::kCache, 1);
  EXPECT_EQ(Thrown([] { CKAPCacheID(); }), "couldn't create cacheID||0");
}

// ---- Data stores of two components, each registered under an interface name of its own ----

constexpr char kFirst[] = "first", kSecond[] = "second store";

template <const auto& Text>
KAPError* GetBlock(KAPDataBlock* out, KAPDataStore*, std::size_t offset) noexcept {
  *out = CKAPDataBlockPtr(&Text[offset], sizeof Text - 1 - offset, nullptr, &Delete).Detach();
  // With an error the block counts as not lent.
  return offset < sizeof Text - 1 ? nullptr : CKAPError(kMemErrorID).Detach();
}

template <const auto& Text>
KAPError* GetSize(std::size_t* out, KAPDataStore*) noexcept {
  *out = sizeof Text - 1;
  return nullptr;
}

template <class Interface, class... Procs>
void RegisterAs(const char* interfaceName, Procs... procs) {
  EXPECT_TRUE(KAPRegisterMethods<Interface>(interfaceName, procs...));
}

KAPContainer* NewContainer(const char* instanceName, const char* interfaceName) {
  return CKAPContainer::NewFullContainer(nullptr, CKAPStringAtom(instanceName),
                                         CKAPStringAtom(interfaceName), nullptr);
}

TEST_F(ResourceTest, DataStores) {
  RegisterAs<KAPDataStoreInterface>("FirstStore", &GetBlock<kFirst>);
  RegisterAs<KAPSizedDataStoreInterface>("FirstStore", &GetSize<kFirst>);
  RegisterAs<KAPDataStoreInterface>("SecondStore", &GetBlock<kSecond>);
  CKAPSizedDataStore first(NewContainer("First", "FirstStore"), KAPAdopt());
  CKAPDataStore second(NewContainer("Second", "SecondStore"), KAPAdopt());
  {
    CKAPDataBlockPtr block = first.GetBlock(2), other(std::move(block));
    EXPECT_EQ(block.Text(), "");
    EXPECT_EQ(other.Text(), "rst");
    EXPECT_EQ(second.GetBlock(7).Text(), "store");
    EXPECT_EQ(gDeleted, 1);
    block = std::move(other);
    EXPECT_EQ(gDeleted, 1);
  }
  EXPECT_EQ(gDeleted, 2);
  EXPECT_EQ(first.GetSize(), 5u);
  EXPECT_EQ(Thrown([&] { (void)first.GetBlock(5); }), kOutOfMemory);
  EXPECT_EQ(gDeleted, 2);
}

int gNextBlock;

TEST_F(ResourceTest, DataBlockStreams) {
  using Stream = KAPDataBlockStreamInterface;
  const auto getNextBlock = [](KAPDataBlock* out, KAPContainer*) noexcept {
    if (gNextBlock == 2) return CKAPError("read twice", "c", 1).Detach();
    *out = CKAPDataBlockPtr(&"ab"[gNextBlock++], 1, nullptr, &Delete).Detach();
    return static_cast<KAPError*>(nullptr);
  };
  const auto rewind = [](KAPContainer*) noexcept {
    gNextBlock = 0;
    return static_cast<KAPError*>(nullptr);
  };
  RegisterAs<Stream>("Blocks", getNextBlock, rewind);
  CKAPDataBlockStream blocks(NewContainer("Blocks", "Blocks"), KAPAdopt());
  for (int round = 0; round < 2; ++round) {
    blocks.Rewind();
    EXPECT_EQ(blocks.GetNextBlock().Text(), "a");
    EXPECT_EQ(blocks.GetNextBlock().Text(), "b");
    EXPECT_EQ(Thrown([&] { (void)blocks.GetNextBlock(); }), "read twice|c|1");
  }
  EXPECT_EQ(gDeleted, 4);
}

// A stream of a component that claims to have read more than there was room for.
TEST_F(ResourceTest, AStreamThatClaimsTooMuch) {
  const auto read = [](std::size_t* count, KAPSimpleStream*, unsigned char*,
                       std::size_t size) noexcept {
    *count = size + 1;
    return static_cast<KAPError*>(nullptr);
  };
  const auto write = [](KAPSimpleStream*, const unsigned char*, std::size_t) noexcept {
    return static_cast<KAPError*>(nullptr);
  };
  RegisterAs<KAPSimpleStreamInterface>("Claiming", read, write);
  CKAPSimpleStream stream(NewContainer("Claiming", "Claiming"), KAPAdopt());
  unsigned char bytes[2];
  EXPECT_EQ(Thrown([&] { (void)stream.Read(bytes, 2); }),
            "a stream returned more than was asked for|KAP|0");
}

// ---- Handles of another kind ----

template <class Wrapper>
void ExpectRefused(const char* wrapper, KAPContainer* handle) {
  SCOPED_TRACE(wrapper);
  EXPECT_EQ(Thrown([=] { Wrapper added(handle); }), kInvalidContainer);
  KAPContainerBaseGeneric own(handle);
  EXPECT_EQ(Thrown([&] { Wrapper adopted(own.Detach(), KAPAdopt()); }), kInvalidContainer);
  EXPECT_EQ(Thrown([] { Wrapper null(nullptr, KAPAdopt()); }), kInvalidContainer);
  const CKAPContainerHolder bare = CKAPContainerHolder::New();
  EXPECT_EQ(Thrown([&] { Wrapper without(bare.Handle()); }), "couldn't get signature||0");
}

// The constructor itself rejects them, and releases what it has added or adopted.
TEST_F(ResourceTest, HandlesOfAnotherKind) {
  RegisterEcho(fHost);
  RegisterAs<KAPDataStoreInterface>("FirstStore", &GetBlock<kFirst>);
  struct Simple : KAPClientSimpleStream {
    std::size_t Read(unsigned char*, std::size_t) override { return 0; }
    void Write(const unsigned char*, std::size_t) override {}
  };
  struct Rewindable : KAPClientRewindableStream {
    std::size_t Read(unsigned char*, std::size_t) override { return 0; }
    void Write(const unsigned char*, std::size_t) override {}
    TKAPClientObject<KAPClientRewindableStream> CreateIndependentlyRewindableStream() override {
      return nullptr;
    }
    void Rewind() override {}
  };
  const CKAPContainerHolder other(MakeContainer("Other"), true),
      simple(CKAPStreamFactory::NewClientSimpleStream(KAPNewClient<Simple>()), true),
      rewindable(CKAPStreamFactory::NewClientRewindableStream(KAPNewClient<Rewindable>()), true),
      store(NewContainer("Store", "FirstStore"), true);
  ExpectRefused<CKAPSimpleStream>("simple stream", other.Handle());
  ExpectRefused<CKAPRewindableStream>("rewindable stream", simple.Handle());
  ExpectRefused<CKAPPositionableStream>("positionable stream", rewindable.Handle());
  ExpectRefused<CKAPDataStore>("data store", other.Handle());
  ExpectRefused<CKAPSizedDataStore>("sized data store", store.Handle());
  ExpectRefused<CKAPDataBlockStream>("data-block stream", store.Handle());
  EXPECT_EQ(Thrown([&] { CKAPRewindableStream(rewindable.Handle()).Rewind(); }), "");
}

}  // namespace
