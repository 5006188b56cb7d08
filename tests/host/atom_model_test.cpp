// SPDX-License-Identifier: MIT
#include <barrier>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "TestHost.h"
#include "Threads.h"
#include "atoms/AtomTable.h"

namespace {

using KAP_T_MT::KAPResource;

class AtomModelTest : public testing::TestWithParam<KAPHost::HostMemory> {
 protected:
  TestHost fHost{false, GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Memory, AtomModelTest,
                         testing::Values(KAPHost::HostMemory::kPages, KAPHost::HostMemory::kPlain));

// What one thread holds, and its random calls.
class Holder {
 public:
  Holder(const TestHost& host, unsigned seed)
      : fNew(host.Proc<KAP_T_MT::KAPStringInterface, "NewStringAtom">()),
        fText(host.Proc<KAP_T_MT::KAPStringInterface, "GetCString">()),
        fAddRef(host.Proc<KAP_T_MT::KAPStringInterface, "AddRef">()),
        fDelete(host.Proc<KAP_T_MT::KAPStringInterface, "DeleteStringAtom">()),
        fRandom(seed) {}

  // Half of the texts are few, so that they come into the caches; the others make the table grow.
  void Step() {
    const unsigned long number = fRandom() % 2 == 0 ? fRandom() % 40 : 40 + fRandom() % 20'000;
    const std::string text = "text " + std::to_string(number);
    auto& [atom, count] = fHeld[text];
    switch (count == 0 ? 0 : fRandom() % 4) {
      case 0: {
        KAPStringAtom* const found = fNew(text.c_str());
        ASSERT_TRUE(count == 0 || found == atom) << text;
        ASSERT_EQ(fText(found), text);
        atom = found;
        ++count;
        break;
      }
      case 1:
        fAddRef(atom);
        ++count;
        break;
      default:
        ASSERT_EQ(fText(atom), text);
        fDelete(atom);
        --count;
    }
  }
  void ReleaseAll() {
    for (auto& [text, held] : fHeld) {
      for (; held.second > 0; --held.second) fDelete(held.first);
    }
  }
  void AddTo(KAPHost::Snapshot& snapshot) const {
    for (const auto& [text, held] : fHeld) {
      if (held.second > 0) snapshot.Add(KAPResource::kAtom, text, {held.second, 0});
    }
  }

 private:
  KAPStringAtom* (*const fNew)(const char*);
  const char* (*const fText)(KAPStringAtom*);
  void (*const fAddRef)(KAPStringAtom*);
  void (*const fDelete)(KAPStringAtom*);
  std::mt19937 fRandom;
  std::map<std::string, std::pair<KAPStringAtom*, long>> fHeld;
};

// Now and then all threads stop, with references in their caches: the snapshot must be the sum of
// what they hold. At the end of the test, nothing may be left.
TEST_P(AtomModelTest, RandomCallsOnThreads) {
  std::vector<Holder> holders;
  for (unsigned i = 0; i < kThreads; ++i) holders.emplace_back(fHost, i);
  std::barrier stop(kThreads);
  RunOnThreads([&](int thread) {
    Holder& holder = holders[static_cast<std::size_t>(thread)];
    for (int phase = 0; phase < 4; ++phase) {
      for (int i = 0; i < 5'000; ++i) holder.Step();
      if (phase == 2) holder.ReleaseAll();
      stop.arrive_and_wait();
      if (thread == 0) {
        KAPHost::Snapshot expected;
        for (const Holder& each : holders) each.AddTo(expected);
        EXPECT_EQ(fHost.TakeSnapshot(), expected);
      }
      stop.arrive_and_wait();
    }
    holder.ReleaseAll();
  });
}

// A table of its own grows from the start, while other threads look for the buckets that it
// replaces, and gives the memory of all former arrays back. Half of the texts are common to all
// threads: each must be one atom.
TEST(AtomTableTest, GrowsUnderThreads) {
  constexpr std::size_t kTexts = 10'000;
  const TestHost host(false, KAPHost::HostMemory::kPages);
  for (int round = 0; round < 4; ++round) {
    const auto table = std::make_unique<KAPHost::AtomTable>();
    table->Start();
    std::vector<std::vector<KAPStringAtom*>> atoms(kThreads);
    std::barrier stop(kThreads);
    RunOnThreads([&](int thread) {
      auto& own = atoms[static_cast<std::size_t>(thread)];
      for (std::size_t i = 0; i < kTexts; ++i) {
        const std::string owner = i % 2 == 0 ? "all" : std::to_string(thread);
        own.push_back(table->Intern((owner + " " + std::to_string(i)).c_str()));
        if (i % 5 == 0) table->Release(own[i / 2]), own[i / 2] = nullptr;
      }
      stop.arrive_and_wait();
      if (thread == 0) {
        std::map<std::string, long> expected;
        for (const auto& each : atoms) {
          for (const KAPStringAtom* atom : each) {
            if (atom) ++expected[atom->Text()];
          }
        }
        std::map<std::string, long> found;
        table->ForEach([&](const KAPStringAtom& atom) { found[atom.Text()] += atom.fCount; });
        EXPECT_EQ(found, expected);
      }
      stop.arrive_and_wait();
      for (KAPStringAtom* atom : own) table->Release(atom);
    });
    table->ForEach([](const KAPStringAtom& atom) { ADD_FAILURE() << atom.Text(); });
  }
}

// Chains of several buckets are too rare to come about in the table.
TEST(BucketTest, AtomsInChains) {
  std::mt19937 random;
  KAPHost::Bucket bucket;
  std::set<KAPStringAtom*> atoms;
  std::vector<std::unique_ptr<KAPStringAtom>> owned;
  int linked = 0;
  for (unsigned step = 0; step < 3000; ++step) {
    if (atoms.size() < 40 && random() % 100 < (step / 300 % 2 == 0 ? 70 : 30)) {
      owned.emplace_back(new KAPStringAtom{1, step, static_cast<std::uint16_t>(step)});
      bucket.Add(*owned.back(), [&] { return ++linked, new KAPHost::Bucket; });
      atoms.insert(owned.back().get());
    } else if (!atoms.empty()) {
      const auto removed = std::next(atoms.begin(), static_cast<long>(random() % atoms.size()));
      const std::unique_ptr<KAPHost::Bucket> emptied(bucket.Remove(**removed));
      linked -= emptied ? 1 : 0;
      atoms.erase(removed);
    }
    std::set<KAPStringAtom*> found;
    bucket.ForEach([&](KAPStringAtom& atom) { found.insert(&atom); });
    ASSERT_EQ(found, atoms);
    ASSERT_LE(linked, static_cast<int>(atoms.size()) / 8);
  }
  while (!atoms.empty()) {
    delete bucket.Remove(**atoms.begin());
    atoms.erase(atoms.begin());
  }
}

}  // namespace
