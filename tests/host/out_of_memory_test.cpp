// SPDX-License-Identifier: MIT

// The host without memory: whichever allocation of a procedure fails, the call fails or does
// without it, and nothing is lost.

#include <cstdlib>
#include <new>

#include "TestHost.h"

namespace {

unsigned long gFirst = 0;  // the first allocation that fails; 0: none
bool gAndAllAfterIt = false;
bool gIsArmed = false;
unsigned long gCount = 0;

bool Fails() noexcept {
  if (!gIsArmed || gFirst == 0) return false;
  ++gCount;
  return gCount == gFirst || (gAndAllAfterIt && gCount > gFirst);
}

void* Allocate(std::size_t size) noexcept {
  return Fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

}  // namespace

// Not inline: g++ would see memory of "new" freed by another function.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (void* const block = Allocate(size)) return block;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}

namespace {

using namespace KAP_T_MT;

class SmallHost : public TestHost {
 public:
  // Allocations fail only inside the procedure.
  template <class Interface, TKAPName Method, class... Args>
  auto Do(Args... args) {
    struct Armed {
      Armed() { gIsArmed = true; }
      ~Armed() { gIsArmed = false; }
    };
    const auto proc = Proc<Interface, Method>();
    const Armed armed;
    return proc(args...);
  }
  // The same for a procedure that returns an error. Returns whether it succeeded.
  template <class Interface, TKAPName Method, class... Args>
  bool Try(Args... args) {
    KAPError* const error = Do<Interface, Method>(args...);
    Errors<"Release">(error);
    return !error;
  }
};

using Container = KAPContainerInterface;
using Factory = KAPStreamFactoryInterface;
using Cache = KAPCacheInterface;
using Filters = KAPFilterInterface;

KAPError* Write(void*, const unsigned char*, std::size_t) { return nullptr; }
KAPError* Read(std::size_t*, void*, unsigned char*, std::size_t) { return nullptr; }
KAPError* Delete(void*) { return nullptr; }

int gOwned = 0;  // streams of the client that the host is to delete
KAPError* Create(void** out, void* client) { return ++gOwned, *out = client, nullptr; }
KAPError* DeleteStream(void*) { return --gOwned, nullptr; }

KAPError* Rewind(void*) { return nullptr; }
KAPError* Close(void*) { return nullptr; }
KAPError* Code(KAPFilter**, void*) { return nullptr; }
KAPError* Update(void*, float, const char*, int) { return nullptr; }

void Purge() {}

int gData;

// Each use returns whether all of its calls succeeded, and releases what it made.
const std::pair<const char*, bool (*)(SmallHost&)> kUses[] = {
    {"texts and errors",
     [](SmallHost& host) {
       KAPStringAtom* const atom = host.Do<KAPStringInterface, "NewStringAtom">("a new text");
       KAPError* const error =
           host.Do<KAPErrorInterface, "NewError">("message", "component", 1L, nullptr, nullptr);
       const bool isDone = atom && error;
       host.Strings<"DeleteStringAtom">(atom);
       host.Errors<"Release">(error);
       return isDone;
     }},
    {"containers",
     [](SmallHost& host) {
       KAPStringAtom* const names[] = {host.Atom("A"), host.Atom("B")};
       KAPContainer* container = nullptr;
       KAPContainer* clone = nullptr;
       const bool isDone =
           host.Try<Container, "NewFullContainer">(&container, &gData, names[0], names[0],
                                                   nullptr) &&
           host.Try<Container, "RegisterInstance">(container, names[1], &gData, nullptr) &&
           host.Try<Container, "RegisterInterface">(container, names[1], names[1]) &&
           host.Try<Container, "CloneContainer">(&clone, container);
       for (KAPContainer* each : {container, clone}) host.Containers<"Release">(each);
       for (KAPStringAtom* name : names) host.Strings<"DeleteStringAtom">(name);
       return isDone;
     }},
    {"streams",
     [](SmallHost& host) {
       static const unsigned char bytes[1000] = {};
       KAPContainer* streams[7] = {};
       const bool isDone =
           host.Try<Factory, "NewPositionableMemoryStream">(&streams[0]) &&
           host.Try<KAPSimpleStreamInterface, "Write">(streams[0], bytes, sizeof bytes) &&
           host.Try<KAPPositionableStreamInterface, "CreateIndependentlyPositionableStream">(
               &streams[1], streams[0]) &&
           host.Try<Factory, "NewPositionableBufferStream">(&streams[2], bytes, sizeof bytes) &&
           host.Try<KAPRewindableStreamInterface, "CreateIndependentlyRewindableStream">(
               &streams[3], streams[2]) &&
           host.Try<Factory, "NewPositionableFileStream">(&streams[4], "/dev/null", "r") &&
           host.Try<Factory, "NewClientRewindableStream">(&streams[5], &gData, &Read, &Write,
                                                          &DeleteStream, &Create, &Rewind) &&
           host.Try<KAPRewindableStreamInterface, "CreateIndependentlyRewindableStream">(
               &streams[6], streams[5]);
       gOwned += streams[5] ? 1 : 0;
       for (KAPContainer* stream : streams) host.Containers<"Release">(stream);
       EXPECT_EQ(gOwned, 0);
       return isDone;
     }},
    {"sinks and progress",
     [](SmallHost& host) {
       KAPDataSink* sinks[4] = {};
       const bool areMade =
           host.Try<Filters, "NewNullDataSink">(&sinks[0]) &&
           host.Try<Filters, "NewClientDataSink">(&sinks[1], &gData, &Write, &Delete) &&
           host.Try<Filters, "NewIdentityFilter">(&sinks[2], sinks[1]) &&
           host.Try<Filters, "NewClientFilter">(&sinks[3], sinks[2], &gData, &Write, &Delete,
                                                &Close, &Code);
       KAPProgress* const progress =
           host.Do<KAPProgressInterface, "NewClientProgress">(&gData, &Update, &Delete);
       for (KAPDataSink* sink : sinks) host.Call<Filters, "Release">(sink);
       host.Call<KAPProgressInterface, "Release">(progress);
       return areMade && progress;
     }},
    {"caches and buffers",
     [](SmallHost& host) {
       KAPCacheID* const id = host.Do<Cache, "NewCacheID">();
       KAPCacheSet* const set = host.Do<Cache, "NewCacheSet">();
       KAPCachePurge* const purge = host.Do<Cache, "NewCachePurge">();
       const bool isAdded = host.Do<Cache, "Add">(id, &gData, 1ul, KAPDeleteProc([](void*) {}));
       host.Do<Cache, "SearchForID">(set, id);
       const bool isKnown = host.Do<Cache, "SearchForID">(set, id);
       host.Do<Cache, "AddClientPurge">(&Purge, 0);
       KAPSharedBuffer* const buffer =
           host.Do<KAPSharedBuffInterface, "NewBuffer">(100ul, nullptr, nullptr, nullptr, nullptr);
       host.Do<Cache, "PurgeAll">();
       host.Call<Cache, "RemoveClientPurge">(&Purge, 0);
       host.Call<Cache, "DeleteCacheSet">(set);
       host.Call<Cache, "DeleteCachePurge">(purge);
       host.Call<Cache, "Release">(id);
       host.Call<KAPSharedBuffInterface, "Release">(buffer);
       return id && set && purge && isAdded && isKnown && buffer;
     }},
    {"errors of the host",
     [](SmallHost& host) {
       return host.TakeMessage(host.Do<KAPSimpleStreamInterface, "Write">(
                  nullptr, static_cast<const unsigned char*>(nullptr), 0ul)) == "invalid container";
     }},
    {"the binder", [](SmallHost& host) {
       const int done =
           host.Do<KAPBinderInterface, "KAPRegisterProcAddress">("Interface", "M", "P", &gData);
       host.Do<KAPBinderInterface, "KAPReportError">("a report that takes a block of its own");
       host.Do<KAPBinderInterface, "KAPUnregisterInterface">("Interface");
       return done != 0 && host.TakeReports().size() == 1;
     }}};

TEST(OutOfMemoryTest, NthAllocationFails) {
  for (const auto& [name, use] : kUses) {
    for (const bool andAllAfterIt : {false, true}) {
      bool fails = true;
      for (unsigned long n = 1; fails; ++n) {
        SCOPED_TRACE(testing::Message() << name << ", allocation " << n << andAllAfterIt);
        SmallHost host;
        gAndAllAfterIt = andAllAfterIt;
        gCount = 0;
        gFirst = n;
        const bool isDone = use(host);
        gFirst = 0;
        fails = gCount >= n;
        EXPECT_TRUE(isDone || fails);
        host.TakeReports();
      }
    }
  }
}

}  // namespace
