// SPDX-License-Identifier: MIT
#include <atomic>

#include "probe/Checks.h"
#include "probe/Services.h"

// What the host promises to calls on several threads.

namespace KAPProbe {

namespace {

using Binder = KAPBinderInterface;
using Containers = KAPContainerInterface;
using Errors = KAPErrorInterface;
using Memory = KAPMemoryInterface;
using Strings = KAPStringInterface;

constexpr int kThreads = 4;
constexpr int kRounds = 5000;

int gProc = 0;  // stands for a procedure

void CountOne(void* count) { ++*static_cast<std::atomic<int>*>(count); }

// Every thread makes atoms of the same strings; they keep one atom of each.
void CheckAtoms() {
  constexpr std::size_t kStrings = 100;
  std::vector<Atom> atoms[kThreads];
  OnThreads(kThreads, [&](int thread) {
    for (int round = 0; round < 50; ++round) {
      std::vector<Atom> mine;
      for (std::size_t i = 0; i < kStrings; ++i) {
        mine.push_back(MakeAtom(("a shared atom " + std::to_string(i)).c_str()));
      }
      atoms[thread] = std::move(mine);
    }
  });
  for (std::size_t i = 0; i < kStrings; ++i) {
    for (const auto& others : atoms) {
      Expect(Call<Strings, "GetCString">(others[i]) == Call<Strings, "GetCString">(atoms[0][i]),
             "threads have different atoms of one string");
    }
    Expect(TextOf(atoms[0][i]) == "a shared atom " + std::to_string(i), "an atom's text is lost");
  }
}

// Adds and releases references to one object on all threads. The one that is left ends it.
template <class Interface, class Owned>
void CheckReferences(Owned owned, const std::atomic<int>& ends) {
  typename std::remove_reference_t<decltype(*owned.Get())>* const handle = owned.Get();
  OnThreads(kThreads, [&](int) {
    for (int i = 0; i < kRounds; ++i) {
      Call<Interface, "AddRef">(handle);
      Call<Interface, "Release">(handle);
    }
  });
  const bool isLost = ends != 0;
  if (isLost) owned.Detach();
  Expect(!isLost, "the object ends while a reference is left");
  owned.Reset();
  Expect(ends == 1, "the last release ends the object " + std::to_string(ends) + " times");
}

void CheckContainers() {
  std::atomic<int> deleted = 0;
  Container container;
  Do<Containers, "NewFullContainer">(container.Place(), static_cast<void*>(&deleted),
                                     MakeAtom("KAPProbeImpl"), MakeAtom("KAPProbeTrialInterface"),
                                     &CountOne);
  CheckReferences<Containers>(std::move(container), deleted);
}

void CheckErrors() {
  std::atomic<int> freed = 0;
  Error error(Call<Errors, "NewError">("m", "c", 1l, static_cast<void*>(&freed), &CountOne));
  Need<Errors, "NewError">(error, "returns null");
  CheckReferences<Errors>(std::move(error), freed);
}

// Blocks that one thread fills and the next one frees.
void CheckMemory() {
  constexpr std::size_t kBlocks = 2000;
  std::vector<unsigned char*> blocks[kThreads];
  OnThreads(kThreads, [&](int thread) {
    for (std::size_t i = 0; i < kBlocks; ++i) {
      auto* const block = static_cast<unsigned char*>(Call<Memory, "Alloc">(1 + i % 300));
      Need<Memory, "Alloc">(block, "returns null");
      std::fill_n(block, 1 + i % 300, static_cast<unsigned char>(thread));
      blocks[thread].push_back(block);
    }
  });
  std::atomic<bool> isWhole = true;
  OnThreads(kThreads, [&](int thread) {
    const int other = (thread + 1) % kThreads;
    for (std::size_t i = 0; i < blocks[other].size(); ++i) {
      unsigned char* const block = blocks[other][i];
      if (block[0] != other || block[i % 300] != other) isWhole = false;
      Call<Memory, "Free">(block);
    }
  });
  Expect(isWhole, "blocks of two threads overlap");
}

void CheckCounter() {
  constexpr int kTimes = 500;
  const unsigned long* const address = Call<Binder, "KAPGetUnregisterCountAddr">();
  Need<Binder, "KAPGetUnregisterCountAddr">(address, "returns null");
  const volatile unsigned long* const counter = address;
  const unsigned long before = *counter;
  OnThreads(kThreads, [&](int thread) {
    const std::string name = "KAPProbeTrialInterface" + std::to_string(thread);
    for (int i = 0; i < kTimes; ++i) {
      const int result = Call<Binder, "KAPRegisterProcAddress">(name.c_str(), "M", "P",
                                                                static_cast<void*>(&gProc));
      Need<Binder, "KAPRegisterProcAddress">(result != 0, "returns 0");
      Expect(Find(name.c_str(), "M", "P"), "a look-up does not find what its thread registered");
      Call<Binder, "KAPUnregisterInterface">(name.c_str());
    }
  });
  const unsigned long grown = *counter - before;
  Expect(grown == kThreads * kTimes, "the counter grows by " + std::to_string(grown) + ", not by " +
                                         std::to_string(kThreads * kTimes));
}

constexpr Check kChecks[] = {
    {"threads.counter", "KAP", "KAPGetUnregisterCountAddr",
     "The host increments the counter atomically", &CheckCounter},
    {"threads.atoms", "KAPStringInterface", "NewStringAtom", "[any thread]", &CheckAtoms},
    {"threads.errors", "KAPErrorInterface", "AddRef", "[any thread]", &CheckErrors},
    {"threads.containers", "KAPContainerInterface", "AddRef", "[any thread]", &CheckContainers},
    {"threads.memory", "KAPMemoryInterface", "Free", "[any thread]", &CheckMemory},
};

}  // namespace

std::span<const Check> ThreadChecks() { return kChecks; }

}  // namespace KAPProbe
