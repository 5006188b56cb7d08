// SPDX-License-Identifier: MIT
#include <functional>
#include <set>
#include <stdexcept>

#include "RuntimeTest.h"

// The component's own objects, called by the host: streams, sinks, filters, progress.

namespace {

using namespace KAP_T_MT;
using Factory = CKAPStreamFactory;
using KAP_T_MT::KAPFault;

std::string gHistory;         // the calls of client objects
std::function<void()> gFail;  // called by each operation
int gLive = 0;
std::string TakeHistory() { return std::exchange(gHistory, ""); }

// A client object of any kind: counts itself, records its calls and fails on request.
template <class Base>
struct Client : Base {
  Client() { ++gLive; }
  ~Client() override { --gLive; }
  template <class... Numbers>
  static void Note(std::string what, Numbers... numbers) {
    ((what += " " + std::to_string(numbers)), ...);
    gHistory += what + ";";
    if (gFail) gFail();
  }
};

struct Stream : Client<KAPClientPositionableStream> {
  std::size_t Read(unsigned char*, std::size_t size) override { return Note("Read", size), 1; }
  void Write(const unsigned char*, std::size_t size) override { Note("Write", size); }
  void Seek(long offset, int origin) override { Note("Seek", offset, origin); }
  long Mark() override { return Note("Mark"), 5; }
};

struct IndependentStream : Stream {
  TKAPClientObject<KAPClientPositionableStream> CreateIndependentlyPositionableStream() override {
    Note("Create");
    return KAPNewClient<Stream>();
  }
};

struct Filter : Client<KAPClientFilterJPEG> {
  void Write(const unsigned char*, std::size_t size) override { Note("Write", size); }
  void Close() override { Note("Close"); }
  CKAPFilter GetVellumcodeFilter() override {
    return CKAPFilter::NewIdentityFilter(CKAPDataSink::New());
  }
  void SetImageParameters(int w, int h, int c) override { Note("Image", w, h, c); }
  void SetCompressionParameters(float quality) override { Note("Quality", quality); }
};

struct Progress : Client<KAPClientProgress> {
  void Update(float fraction, const char* text, int flag) override { Note(text, fraction, flag); }
};

const unsigned char kBytes[8] = {};
unsigned char gBuffer[8];

struct ClientTest : BoundTest {
  ~ClientTest() override { EXPECT_EQ(TakeHistory() + std::to_string(gLive), "0"); }
};

TEST_F(ClientTest, Streams) {
  CKAPPositionableStream stream(Factory::NewClientPositionableStream(KAPNewClient<Stream>()),
                                KAPAdopt());
  stream.Write(kBytes, 2);
  EXPECT_EQ(stream.Read(gBuffer, 8), 1u);
  EXPECT_EQ(stream.Mark(), 5);
  stream.Seek(-3, kKAPSeekFromEnd);
  EXPECT_EQ(TakeHistory(), "Write 2;Read 8;Mark;Seek -3 2;");
  EXPECT_EQ(Thrown([&] { (void)stream.CreateIndependentlyRewindableStream(); }), kUnknown);
  stream = CKAPPositionableStream(
      Factory::NewClientPositionableStream(KAPNewClient<IndependentStream>()), KAPAdopt());
  stream.CreateIndependentlyRewindableStream().Rewind();
  CKAPRewindableStream rewindable(Factory::NewClientRewindableStream(KAPNewClient<Stream>()),
                                  KAPAdopt());
  rewindable.Rewind();
  EXPECT_EQ(TakeHistory(), "Create;Seek 0 0;Seek 0 0;");
  CKAPSimpleStream simple(Factory::NewClientSimpleStream(KAPNewClient<Stream>()), KAPAdopt());
  EXPECT_EQ(Thrown([&] { CKAPRewindableStream wrong(simple.Handle()); }), kInvalidContainer);
}

// The host would call the new stream with the procedures of a class that it does not have.
TEST_F(ClientTest, AStreamOfAnotherClass) {
  struct Rewindable : Client<KAPClientRewindableStream> {
    std::size_t Read(unsigned char*, std::size_t) override { return 0; }
    void Write(const unsigned char*, std::size_t) override {}
    TKAPClientObject<KAPClientRewindableStream> CreateIndependentlyRewindableStream() override {
      return nullptr;
    }
    void Rewind() override {}
  };
  struct Wrong : Stream {
    explicit Wrong(bool makesNone) : fMakesNone(makesNone) {}
    TKAPClientObject<KAPClientRewindableStream> CreateIndependentlyRewindableStream() override {
      return fMakesNone ? nullptr : KAPNewClient<Rewindable>();
    }
    bool fMakesNone;
  };
  const std::pair<bool, const char*> rows[] = {{false, "the new stream cannot be positioned|TOQ|0"},
                                               {true, kUnknown}};
  for (const auto& [makesNone, text] : rows) {
    CKAPPositionableStream stream(KAPNewClient<Wrong>(makesNone));
    EXPECT_EQ(Thrown([&] { (void)stream.CreateIndependentlyRewindableStream(); }), text);
    EXPECT_EQ(gLive, 1);
  }
}

TEST_F(ClientTest, SinksFiltersAndProgress) {
  const CKAPDataSink sink(KAPNewClient<Filter>());
  CKAPFilter identity = CKAPFilter::NewIdentityFilter(sink);
  EXPECT_EQ(identity.PeekTarget().Handle(), sink.Handle());
  EXPECT_TRUE(identity.IsFilter() && !sink.IsFilter());
  identity.Write(kBytes, 3);
  CKAPFilter filter(sink, TKAPClientObject<KAPClientFilter>(KAPNewClient<Filter>()));
  EXPECT_TRUE(filter.GetVellumcodeFilter().IsFilter());
  filter.Close();
  identity.SetDataSink(filter);
  EXPECT_EQ(identity.PeekTarget().Handle(), filter.Handle());
  EXPECT_EQ(identity.GetChainState(), 1u);
  EXPECT_NE(Thrown([&] { identity.SetDataSink(identity); }), "");
  identity.ResetChainState();
  EXPECT_EQ(filter.GetChainState(), 0u);
  EXPECT_NE(Thrown([] { CKAPFilter(nullptr).Close(); }), "");
  CKAPFilterJPEG jpeg(sink, KAPNewClient<Filter>());
  jpeg.SetImageParameters(1, 2, 3);
  const CKAPFilterJPEG added(jpeg.Handle()), adopted(CKAPFilterJPEG(jpeg).Detach(), KAPAdopt());
  CKAPFilterJPEG(TKAPNewHandle(CKAPFilterJPEG(added).Detach())).SetCompressionParameters(0.5f);
  EXPECT_EQ(TakeHistory(), "Write 3;Close;Image 1 2 3;Quality 0.500000;");
  CKAPProgress progress(KAPNewClient<Progress>());
  const CKAPProgress same(progress.Handle());
  CKAPProgress(TKAPNewHandle(CKAPProgress(same).Detach())).Update(0.25f, "at", 7);
  EXPECT_EQ(TakeHistory(), "at 0.250000 7;");
}

// What an operation throws becomes the error, and the result place is cleared.
TEST_F(ClientTest, FailuresBecomeErrors) {
  using Base = KAPClientPositionableStream;
  const std::pair<std::function<void()>, const char*> rows[] = {
      {[] { CKAPError::ThrowError("own", "c", 3); }, "own|c|3"},
      {[] { throw CKAPError(); }, "(empty)"},
      {[] { throw std::runtime_error("text"); }, "text|TOQ|0"},
      {[] { throw std::bad_alloc(); }, kOutOfMemory},
      {[] { throw 1; }, kUnknown}};
  IndependentStream object;
  void* const client = KAPClientAddress(&object);
  for (const auto& [fail, text] : rows) {
    gFail = fail;
    std::size_t count = 7;
    void* created = client;
    KAPError* const errors[] = {
        TKAPClientProc<&KAPClientSimpleStream::Read>::Call(&count, client, gBuffer, 8),
        TKAPClientProc<&KAPClientSimpleStream::Write>::Call(client, kBytes, 1),
        TKAPClientProc<&Base::CreateIndependentlyPositionableStream>::Call(&created, client)};
    gFail = nullptr;
    for (KAPError* error : errors) EXPECT_EQ(Describe(CKAPError(error)), text);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(created, nullptr);
    EXPECT_EQ(TakeHistory(), "Read 8;Write 1;Create;");
  }
  // A host that passes null.
  const auto read = &TKAPClientProc<&KAPClientSimpleStream::Read>::Call;
  std::size_t count = 7;
  EXPECT_EQ(Describe(CKAPError(read(&count, nullptr, gBuffer, 8))), kUnknown);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(Describe(CKAPError(read(nullptr, client, gBuffer, 8))), kUnknown);
  // Without AddRef the error cannot be copied, and the call still fails.
  KAPError* const own = CKAPError("own", "c", 3).Detach();
  gFail = [&] { throw CKAPError(own, KAPAdopt()); };
  fHost.HideProcedure(KAPErrorInterface::kName, "AddRef");
  MoveCounter(fHost);
  KAPError* const shared = read(&count, client, gBuffer, 8);
  gFail = nullptr;
  fHost.StopFaults();
  MoveCounter(fHost);
  EXPECT_EQ(Describe(CKAPError(shared, KAPShare())), kUnknown);
  TakeHistory();
}

// An empty reference reaches the host as a null handle.
TEST_F(ClientTest, EmptyReferences) {
  HostTap::Clear();
  EXPECT_TRUE(CKAPDataSink().IsNull() && CKAPFilter().IsNull() && CKAPFilterJPEG().IsNull());
  EXPECT_TRUE(CKAPProgress().IsNull());
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  EXPECT_NE(Thrown([] { CKAPDataSink().Write(kBytes, 1); }), "");
  EXPECT_NE(Thrown([] { CKAPProgress().Update(0, "", 0); }), "");
  EXPECT_EQ(Thrown([] { CKAPProgress(nullptr, KAPAdopt()); }),
            "couldn't construct CKAPProgress||0");
}

// A host that breaks its contract: no error, and no sink.
TEST_F(ClientTest, NeitherSinkNorError) {
  const CKAPDataSink target = CKAPDataSink::New();
  const auto none = [](auto...) { return static_cast<KAPError*>(nullptr); };
  ReplaceProc<KAPFilterInterface, "NewNullDataSink">(fHost, none);
  ReplaceProc<KAPFilterInterface, "NewClientDataSink">(fHost, none);
  ReplaceProc<KAPFilterInterface, "NewIdentityFilter">(fHost, none);
  ReplaceProc<KAPFilterInterface, "NewClientFilter">(fHost, none);
  ReplaceProc<KAPFilterInterface, "NewFilterJPEG">(fHost, none);
  MoveCounter(fHost);
  const std::function<void()> makers[] = {[] { (void)CKAPDataSink::New(); },
                                          [] { CKAPDataSink(KAPNewClient<Filter>()); },
                                          [&] { (void)CKAPFilter::NewIdentityFilter(target); },
                                          [&] { CKAPFilter(target, KAPNewClient<Filter>()); },
                                          [&] { CKAPFilterJPEG(target, KAPNewClient<Filter>()); }};
  for (const auto& make : makers) EXPECT_EQ(Thrown(make), kUnknown);
  EXPECT_EQ(CKAPDataSink::_NewClientDataSink(KAPNewClient<Filter>()), nullptr);
}

// A client object is deleted when the host's table is gone.
TEST_F(ClientTest, TablesThatAreGone) {
  fHost.FailFrom(KAPFault::kProgress, 1);
  EXPECT_EQ(Thrown([] { (void)CKAPProgress::New(); }), "couldn't construct CKAPProgress||0");
  for (const auto* name :
       {KAPStreamFactoryInterface::kName, KAPFilterInterface::kName, KAPProgressInterface::kName}) {
    fHost.HideInterface(name);
  }
  MoveCounter(fHost);
  EXPECT_EQ(Factory::NewClientSimpleStream(KAPNewClient<Stream>()), nullptr);
  EXPECT_EQ(CKAPDataSink::_NewClientDataSink(KAPNewClient<Filter>()), nullptr);
  EXPECT_EQ(CKAPProgress::_NewClientProgress(KAPNewClient<Progress>()), nullptr);
  for (auto* construct :
       {+[] { (void)CKAPDataSink::New(); }, +[] { CKAPDataSink(KAPNewClient<Filter>()); },
        +[] { CKAPFilter(CKAPDataSink(nullptr), KAPNewClient<Filter>()); },
        +[] { CKAPFilterJPEG(CKAPDataSink(nullptr), KAPNewClient<Filter>()); },
        +[] { (void)CKAPProgress::New(); }, +[] { CKAPProgress(KAPNewClient<Progress>()); }}) {
    EXPECT_EQ(Thrown(construct), kMissingProcedure);
  }
  EXPECT_EQ(Thrown([] { CKAPPositionableStream stream("/tmp", "r"); }), kInvalidContainer);
  EXPECT_EQ(Thrown([] { (void)Factory::NewClientSimpleStream(nullptr); }), kUnknown);
}

// What a destructor throws is reported when the object is deleted, or returned by the procedure
// that deletes it.
TEST_F(ClientTest, DestructorsMayThrow) {
  struct Unfinished : KAPClientDataSink {
    ~Unfinished() noexcept(false) override { throw std::runtime_error("unfinished"); }
    void Write(const unsigned char*, std::size_t) override {}
  };
  { const auto object = KAPNewClient<Unfinished>(); }
  EXPECT_EQ(fHost.TakeReport(), "unfinished");
  KAPDeleteVirtualClientBase(nullptr);
  auto object = KAPNewClient<Unfinished>();
  EXPECT_EQ(Describe(CKAPError(KAPDeleteClientProc(KAPClientAddress(object.release())))),
            "unfinished|TOQ|0");
}

// ---- Every wrapper, with every call of the host failing in turn ----

void Need(bool isDone) {
  if (!isDone) throw std::runtime_error("a call has failed");
}

CKAPPositionableStream NewStream() {
  return CKAPPositionableStream(
      Factory::NewClientPositionableStream(KAPNewClient<IndependentStream>()), KAPAdopt());
}

// What of a wrapper calls the host. A use throws if a call fails.
const struct {
  const char* wrapper;
  void (*use)();
} kUses[] = {
    {"atoms",
     [] {
       CKAPStringAtom atom("a");
       atom = atom + CKAPStringAtom::ToHex(&gLive);
       Need(atom.Text() && CKAPStringAtom(atom).Text() == atom.Text());
     }},
    {"errors", [] { Need(CKAPError(CKAPError("m", "c", 1)).Matches("c", 1)); }},
    {"memory", [] { KAPNewBlock<char>(10)[0] = 1; }},
    {"containers",
     [] {
       const CKAPStringAtom name("Impl"), other("Other");
       const CKAPContainerHolder empty,
           full(CKAPContainer::NewFullContainer(&gLive, name, name, nullptr), true);
       const KAPContainerBaseGeneric wrapper(full.Handle()), copy(wrapper);
       Need(CKAPContainer::GetInstance(copy.Handle(), name) == &gLive);
       Need(!CKAPContainer::GetInstance(copy.Handle(), other));
     }},
    {"buffers", [] { TKAPSharedBuffer<char>(TKAPSharedBuffer<char>(4)).Data()[0] = 1; }},
    {"caches",
     [] {
       const CKAPCacheID id;
       Need(CKAPCache::Add(id, &gLive, 1, [](void*) {}));
       CKAPCacheLock lock = CKAPCache::Attach(id);
       CKAPCacheLock(lock).UpdateCost(5);
       Need(lock.ReturnCost() == 5 && CKAPCache::CurrentCacheSize() == 5);
       CKAPCache::PurgeAll();
     }},
    {"streams of the host",
     [] {
       CKAPPositionableStream memory, file("/dev/null", "r");
       memory.Write(kBytes, 2);
       memory.Rewind();
       memory.Seek(1, kKAPSeekFromStart);
       Need(memory.Mark() == 1 && memory.Read(gBuffer, 8) == 1);
       CKAPPositionableStream(Factory::NewPositionableBufferStream(kBytes, 8), KAPAdopt());
       (void)memory.CreateIndependentlyPositionableStream().CreateIndependentlyRewindableStream();
     }},
    {"streams of the component",
     [] {
       NewStream().CreateIndependentlyPositionableStream().Write(kBytes, 1);
       CKAPRewindableStream(Factory::NewClientRewindableStream(KAPNewClient<Stream>()), KAPAdopt())
           .Rewind();
       Need(CKAPSimpleStream(Factory::NewClientSimpleStream(KAPNewClient<Stream>()), KAPAdopt())
                .Read(gBuffer, 8) == 1);
     }},
    {"sinks and filters",
     [] {
       const CKAPDataSink null = CKAPDataSink::New(), sink(KAPNewClient<Filter>());
       CKAPFilter filter(sink, TKAPClientObject<KAPClientFilter>(KAPNewClient<Filter>()));
       CKAPFilterJPEG jpeg(null, KAPNewClient<Filter>());
       jpeg.SetImageParameters(1, 2, 3);
       jpeg.SetCompressionParameters(0.5f);
       jpeg.GetVellumcodeFilter().Write(kBytes, 1);
       filter.SetDataSink(jpeg);
       Need(filter.PeekTarget().IsFilter() && filter.GetChainState() == 0);
       filter.Close();
       filter.ResetChainState();
     }},
    {"progress", [] {
       CKAPProgress::New().Update(0, "", 0);
       CKAPProgress(KAPNewClient<Progress>()).Update(0, "", 0);
     }}};

// Whichever call of the host fails, alone or with all after it: the caller learns of it, and
// neither side keeps anything.
TEST(ClientFaultTest, FailEachCall) {
  for (const auto& row : kUses) {
    SCOPED_TRACE(row.wrapper);
    FailingCall::Sweep([&](const FailingCall& call) {
      TestHost host;
      EXPECT_TRUE(KAPClientInit(host.GetProcAddress()));
      std::string thrown;
      const bool fails = call.During(host, [&] { thrown = Thrown(row.use); });
      EXPECT_EQ(!thrown.empty(), fails) << thrown;
      EXPECT_EQ(gLive, 0);
      KAPClientTerminate();
      return fails;
    });
  }
  TakeHistory();
}

// The uses above make every call of the host that can fail and that a wrapper makes.
TEST_F(ClientTest, UsesAreComplete) {
  const std::set<std::string> withoutWrapper = {
      "CloneContainer", "GetInstance", "GetParentMethod",  "NewCachePurge",    "NewCacheSet",
      "Realloc",        "SearchForID", "RegisterInstance", "RegisterInterface"};
  for (const auto& [wrapper, use] : kUses) use();
  TakeHistory();
  std::set<std::string> used;
  for (const auto& [method, texts] : HostTap::TakeCalls()) used.insert(method);
  KAPHostInterfaceSet::ForEach([&]<class Interface>() {
    for (std::size_t i = 0; i < Interface::kCount; ++i) {
      const char* const method = Interface::kEntries[i].fMethodName;
      if (Interface::kTraits[i].fFault == KAPFault::kNever) continue;
      EXPECT_NE(used.contains(method), withoutWrapper.contains(method))
          << Interface::kName << " " << method;
    }
  });
}

}  // namespace
