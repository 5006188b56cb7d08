// SPDX-License-Identifier: MIT
#include "Threads.h"

#include <array>
#include <barrier>
#include <memory>

#include "TestHost.h"

namespace {

using namespace KAP_T_MT;
using KAP_T_MT::KAPResource;

constexpr int kRounds = 50000;

// With pages and caches of references also where a sanitizer switches them off.
class ThreadsTest : public testing::TestWithParam<KAPHost::HostMemory> {
 protected:
  TestHost fHost{false, GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Memory, ThreadsTest,
                         testing::Values(KAPHost::HostMemory::kPages, KAPHost::HostMemory::kPlain));

// In every round an atom dies on one thread while others look it up: they must find it alive or
// make a new one.
TEST_P(ThreadsTest, LastReleaseAgainstLookUp) {
  const auto newAtom = fHost.Proc<KAP_T_MT::KAPStringInterface, "NewStringAtom">();
  const auto text = fHost.Proc<KAP_T_MT::KAPStringInterface, "GetCString">();
  const auto deleteAtom = fHost.Proc<KAP_T_MT::KAPStringInterface, "DeleteStringAtom">();
  RunOnThreads([&](int) {
    for (int round = 0; round < kRounds; ++round) {
      const char* wanted = round % 2 == 0 ? "contended" : "other";
      KAPStringAtom* first = newAtom(wanted);
      KAPStringAtom* second = newAtom(wanted);
      ASSERT_EQ(first, second);
      ASSERT_STREQ(text(first), wanted);
      deleteAtom(first);
      ASSERT_STREQ(text(second), wanted);
      deleteAtom(second);
    }
  });
}

// The table grows while it is searched.
TEST_P(ThreadsTest, ManyAtoms) {
  const auto newAtom = fHost.Proc<KAP_T_MT::KAPStringInterface, "NewStringAtom">();
  std::vector<std::vector<KAPStringAtom*>> atoms(kThreads);
  RunOnThreads([&](int thread) {
    for (int i = 0; i < 5000; ++i) {
      atoms[static_cast<std::size_t>(thread)].push_back(newAtom(std::to_string(i).c_str()));
    }
  });
  for (int thread = 1; thread < kThreads; ++thread) {
    EXPECT_EQ(atoms[0], atoms[static_cast<std::size_t>(thread)]);
  }
  EXPECT_EQ(fHost.TakeSnapshot().Total(KAPResource::kAtom).fNumber, kThreads * 5000);
  RunOnThreads([&](int thread) {
    for (KAPStringAtom* atom : atoms[static_cast<std::size_t>(thread)]) {
      fHost.Strings<"DeleteStringAtom">(atom);
    }
  });
}

// Made on one thread and released on another; snapshots are taken meanwhile and right afterwards.
TEST_P(ThreadsTest, SharedContainersAndBlocks) {
  static std::atomic<int> deleted;
  deleted = 0;
  KAPStringAtom* impl = fHost.Atom("Impl");
  std::vector<KAPContainer*> shared(1000);
  std::vector<void*> blocks(shared.size());
  for (std::size_t i = 0; i < shared.size(); ++i) {
    blocks[i] = fHost.Memory<"Alloc">(100ul);
    ASSERT_EQ(fHost.Containers<"NewFullContainer">(&shared[i], &deleted, impl, impl,
                                                   KAPDeleteProc([](void*) { ++deleted; })),
              nullptr);
    for (int thread = 1; thread < kThreads; ++thread) fHost.Containers<"AddRef">(shared[i]);
  }
  RunOnThreads([&](int thread) {
    for (std::size_t i = 0; i < shared.size(); ++i) {
      EXPECT_TRUE(fHost.Containers<"AddRef">(shared[i]));
      fHost.Containers<"Release">(shared[i]);
      fHost.Containers<"Release">(shared[i]);
      if (thread == 0) fHost.Memory<"Free">(blocks[i]);
    }
    fHost.TakeSnapshot();
  });
  EXPECT_EQ(deleted, static_cast<int>(shared.size()));
  fHost.Strings<"DeleteStringAtom">(impl);
  EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty()) << fHost.TakeSnapshot();
}

TEST_P(ThreadsTest, RegistryCounterErrorsAndReports) {
  const auto unregister = fHost.Proc<KAPBinderInterface, "KAPUnregisterInterface">();
  const auto report = fHost.Proc<KAPBinderInterface, "KAPReportError">();
  auto* counter = reinterpret_cast<std::atomic<unsigned long>*>(
      fHost.Call<KAPBinderInterface, "KAPGetUnregisterCountAddr">());
  const unsigned long before = *counter;
  constexpr int kInterfaces = 500;
  RunOnThreads([&](int thread) {
    const std::string name = "Interface" + std::to_string(thread);
    for (int i = 0; i < kInterfaces; ++i) {
      fHost.Register(name.c_str(), "M", "P", &fHost);
      EXPECT_EQ(fHost.Find(name.c_str(), "M", "P"), &fHost);
      unregister(name.c_str());
      fHost.Errors<"Release">(fHost.Errors<"NewError">(name.c_str(), "c", 0L, nullptr, nullptr));
    }
    report(name.c_str());
  });
  EXPECT_EQ(*counter, before + kThreads * kInterfaces);
  EXPECT_EQ(fHost.TakeReports().size(), static_cast<std::size_t>(kThreads));
}

// Uses words so often that the thread takes references to them in advance.
void UseWords(const TestHost& host) {
  const auto newAtom = host.Proc<KAPStringInterface, "NewStringAtom">();
  const auto deleteAtom = host.Proc<KAPStringInterface, "DeleteStringAtom">();
  for (int word = 0; word < 200; ++word) {
    const std::string text = "word " + std::to_string(word);
    std::array<KAPStringAtom*, 4> atoms{};
    for (auto& atom : atoms) atom = newAtom(text.c_str());
    for (auto* atom : atoms) deleteAtom(atom);
  }
}

// Runs `body` after the calls of a thread with references taken in advance, while it ends.
void WhileThreadEnds(const TestHost& host, const std::function<void()>& body) {
  std::atomic<bool> isDone{false};
  std::thread ending([&] {
    UseWords(host);
    isDone = true;
  });
  while (!isDone) std::this_thread::yield();
  body();
  ending.join();
}

// No component holds the references that an ending thread gives back.
TEST_P(ThreadsTest, SnapshotsWhileThreadsEnd) {
  for (int i = 0; i < 200 && !HasFailure(); ++i) {
    WhileThreadEnds(fHost, [&] {
      for (int look = 0; look < 10; ++look) EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty());
    });
  }
}

TEST(HostEndTest, WhileThreadsEnd) {
  for (int i = 0; i < 200 && !testing::Test::HasFailure(); ++i) {
    auto host = std::make_unique<TestHost>(false, KAPHost::HostMemory::kPages);
    WhileThreadEnds(*host, [&] { host.reset(); });
  }
}

// Two threads release one reference. The second release is reported; that of an error is not while
// the first one still destroys it.
TEST(ThreadsChecksTest, TwoLastReleases) {
  TestHost host(true, KAPHost::HostMemory::kPages);
  KAPStringAtom* atom = nullptr;
  KAPError* error = nullptr;
  std::barrier turn(2);
  const auto release = [&] {
    turn.arrive_and_wait();
    host.Strings<"DeleteStringAtom">(atom);
    turn.arrive_and_wait();
    host.Errors<"Release">(error);
    turn.arrive_and_wait();
  };
  constexpr int kTurns = 2000;
  std::jthread other([&] {
    for (int i = 0; i < kTurns; ++i) release();
  });
  for (int i = 0; i < kTurns; ++i) {
    atom = host.Atom("text");
    error = host.Errors<"NewError">("message", "c", 0L, nullptr, nullptr);
    release();
  }
  other.join();
  long atoms = 0;
  for (const std::string& report : host.TakeReports()) {
    // While the other thread is still releasing, the accounts of components see it first, and the
    // atom may be dead by the time it is released.
    const bool isOfAtom = report.starts_with("KAP host: release of a dead atom \"text\"") ||
                          report.starts_with("KAP host: release of a reference to atom \"text\"");
    atoms += isOfAtom ? 1 : 0;
    EXPECT_TRUE(isOfAtom || report.starts_with("KAP host: release of a dead error \"message\"") ||
                report.starts_with("KAP host: release of a reference to error \"message\""))
        << report;
  }
  EXPECT_GE(atoms, kTurns);
}

// New types of containers appear on all threads at once.
TEST_P(ThreadsTest, NewTypes) {
  RunOnThreads([&](int) {
    for (int i = 0; i < 300; ++i) {
      KAPStringAtom* name = fHost.Atom(("Type" + std::to_string(i)).c_str());
      KAPContainer* container = nullptr;
      fHost.Containers<"NewFullContainer">(&container, nullptr, name, name, nullptr);
      EXPECT_EQ(fHost.TakeText(fHost.Containers<"GetSignature">(container)),
                "Type" + std::to_string(i));
      fHost.Strings<"DeleteStringAtom">(name);
      fHost.Containers<"Release">(container);
    }
  });
}

// Independent streams over one file, and one cache in which an item is added, used and purged.
TEST_P(ThreadsTest, StreamsAndCaches) {
  using Cache = KAPCacheInterface;
  static std::atomic<int> filed, purged;
  filed = purged = 0;
  const auto read = fHost.Proc<KAPSimpleStreamInterface, "Read">();
  KAPContainer* file = nullptr;
  fHost.Call<KAPStreamFactoryInterface, "NewPositionableFileStream">(&file, "/proc/self/exe", "r");
  KAPContainer* streams[kThreads] = {};
  for (KAPContainer*& stream : streams) {
    fHost.Call<KAPRewindableStreamInterface, "CreateIndependentlyRewindableStream">(&stream, file);
  }
  KAPCacheID* const id = fHost.Call<Cache, "NewCacheID">();
  const KAPDeleteProc purgeItem = [](void*) { ++purged; };
  RunOnThreads(
      [&](int thread) {
        unsigned char buffer[100];
        std::size_t count = 0;
        for (int round = 0; round < 2000; ++round) {
          EXPECT_EQ(read(&count, streams[thread], buffer, sizeof buffer), nullptr);
          if (fHost.Call<Cache, "Add">(id, &filed, 1ul, purgeItem)) ++filed;
          if (void* item = fHost.Call<Cache, "Attach">(id))
            fHost.Call<Cache, "MarkPurge">(id, item);
        }
        fHost.Containers<"Release">(streams[thread]);
      },
      [&] { fHost.Call<Cache, "PurgeAll">(); });
  fHost.Call<Cache, "Release">(id);
  EXPECT_EQ(filed, purged);
  fHost.Containers<"Release">(file);
}

// A host that observes everything, on all threads at once: nothing is misused, so nothing is
// reported, and nothing stays in the list.
TEST(ObservedThreadsTest, RightUseIsNotReported) {
  KAPHost::HostOptions options{.fOnReport = [](const auto& text) { ADD_FAILURE() << text; },
                               .fOnLeak = [](const auto& held) { ADD_FAILURE() << held; },
                               .fChecks = true};
  options.fDebug.fTrace = "/dev/null";
  options.fDebug.fStacks = true;
  KAPHost::Host host(options);
  KAPContainer* shared = nullptr;
  host.Proc<KAPContainerInterface, "NewContainer">()(&shared);
  RunOnThreads([&](int) {
    for (int round = 0; round < 300; ++round) {
      KAPStringAtom* const atom =
          host.Proc<KAPStringInterface, "NewStringAtom">()(round % 2 == 0 ? "one" : "two");
      KAPContainer* own = nullptr;
      host.Proc<KAPContainerInterface, "NewFullContainer">()(&own, nullptr, atom, atom, nullptr);
      host.Proc<KAPContainerInterface, "AddRef">()(shared);
      KAPError* const error =
          host.Proc<KAPErrorInterface, "NewError">()("error", "test", 0, nullptr, nullptr);
      void* const block = host.Proc<KAPMemoryInterface, "Alloc">()(100);
      host.Proc<KAPMemoryInterface, "Free">()(
          host.Proc<KAPMemoryInterface, "Realloc">()(block, 200));
      host.Proc<KAPErrorInterface, "Release">()(error);
      host.Proc<KAPContainerInterface, "Release">()(shared);
      host.Proc<KAPContainerInterface, "Release">()(own);
      host.Proc<KAPStringInterface, "DeleteStringAtom">()(atom);
    }
  });
  host.Proc<KAPContainerInterface, "Release">()(shared);
  EXPECT_TRUE(host.LiveThings().empty());
}

}  // namespace
