#include "accounting/Accounting.h"

#include <mutex>
#include <new>

namespace KAPHost {

namespace {

// Nothing here is ever destroyed: static objects of components may call the host until the very
// end.
constinit std::mutex gTallyMutex;
constinit Tally* gTallies = nullptr;
constinit std::array<Holding, kTallySlots> gRetired{};
// Written by all threads for which there is no memory; what they count may then be lost.
constinit Tally gSpare;

void Unlink(const Tally& tally) noexcept {
  (tally.fPrevious != nullptr ? tally.fPrevious->fNext : gTallies) = tally.fNext;
  if (tally.fNext != nullptr) tally.fNext->fPrevious = tally.fPrevious;
}

void AddEntry(Holding& sum, const Tally::Entry& entry) noexcept {
  sum.fNumber += entry.fNumber.load(std::memory_order_relaxed);
  sum.fExtent += entry.fExtent.load(std::memory_order_relaxed);
}

// Adds the thread's numbers to those of the threads that have ended, when the thread ends.
// Thread-local objects that are destroyed still later get a tally that stays.
struct Retirement {
  ~Retirement() {
    Tally* tally = tTally;
    tTally = nullptr;
    if (tally == nullptr || tally == &gSpare) return;
    {
      const std::lock_guard lock(gTallyMutex);
      for (unsigned slot = 0; slot < kTallySlots; ++slot) {
        AddEntry(gRetired[slot], tally->fEntries[slot]);
      }
      Unlink(*tally);
    }
    delete tally;
  }
  bool fArmed = false;
};

constinit thread_local bool tRetirementArmed = false;
thread_local Retirement tRetirement;

}  // namespace

Tally& NewTally() noexcept {
  if (!tRetirementArmed) {
    tRetirementArmed = true;
    tRetirement.fArmed = true;  // the first touch is what schedules the destructor
  }
  Tally* tally = new (std::nothrow) Tally;
  if (tally == nullptr) return gSpare;
  const std::lock_guard lock(gTallyMutex);
  tally->fNext = gTallies;
  if (gTallies != nullptr) gTallies->fPrevious = tally;
  gTallies = tally;
  tTally = tally;
  return *tally;
}

Holding TallyTotal(unsigned slot) noexcept {
  const std::lock_guard lock(gTallyMutex);
  Holding sum = gRetired[slot];
  AddEntry(sum, gSpare.fEntries[slot]);
  for (const Tally* tally = gTallies; tally != nullptr; tally = tally->fNext) {
    AddEntry(sum, tally->fEntries[slot]);
  }
  return sum;
}

}  // namespace KAPHost
