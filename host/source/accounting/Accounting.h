// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <string_view>

#include "accounting/Resources.h"
#include "base/IntrusiveList.h"
#include "kaphost/Snapshot.h"

namespace KAPHost {

// The host's accounting. Each thread counts in slots of its own, without locked instructions. A
// total is the sum over all threads, those that have ended included: a block that one thread
// allocates and another one frees leaves 1 and -1 in their slots.

inline constexpr unsigned kSlots = 128;

// The slot of a resource. That of containers counts those without a type.
constexpr unsigned SlotOf(KAPResource resource) { return static_cast<unsigned>(resource); }

// Types of containers have a slot each; those for which none is left share the last one.
inline constexpr unsigned kFirstTypeSlot = kResources;
inline constexpr unsigned kOtherTypesSlot = kSlots - 1;
static_assert(kFirstTypeSlot < kOtherTypesSlot);

// What one thread counts. Apart by the two cache lines that the processor fetches together: beside
// the account of another thread, counting takes three times as long.
struct alignas(128) ThreadAccount {
  struct Entry {
    std::atomic<long> fNumber{0};
    std::atomic<long> fExtent{0};
  };

  // Only for the thread itself.
  void Add(unsigned slot, long number, long extent) noexcept {
    constexpr auto relaxed = std::memory_order_relaxed;
    Entry& entry = fEntries[slot];
    if (number != 0) entry.fNumber.store(WrappingSum(entry.fNumber.load(relaxed), number), relaxed);
    if (extent != 0) entry.fExtent.store(WrappingSum(entry.fExtent.load(relaxed), extent), relaxed);
  }

  std::array<Entry, kSlots> fEntries;
  ListLinks<ThreadAccount> fLinks;
};

// Hidden, like the other variables that each call reads: then its place is known at link time.
[[gnu::visibility("hidden")]] inline thread_local constinit ThreadAccount* tAccount = nullptr;

// Counts for a thread that has no account, and makes one when there is memory.
void CountFirst(unsigned slot, long number, long extent) noexcept;

// Adds to the thread's numbers of a slot.
inline void Count(unsigned slot, long number, long extent) noexcept {
  ThreadAccount* const account = tAccount;
  if (!account) [[unlikely]]
    return CountFirst(slot, number, extent);
  account->Add(slot, number, extent);
}

inline void Count(KAPResource resource, long number, long extent) noexcept {
  Count(SlotOf(resource), number, extent);
}

Holding TotalOf(unsigned slot) noexcept;

// Guards the list of accounts, for the time of a fork.
std::mutex& AccountsMutex() noexcept;

// Receives what is held, in any number of additions for each name.
class HoldingSum {
 public:
  virtual void Add(KAPResource resource, std::string_view name, Holding holding) = 0;

 protected:
  ~HoldingSum() = default;
};

// Adds what is held of a resource that is counted by name. Each such resource has a specialisation,
// where its things are kept.
template <KAPResource kResource>
void AddNamed(HoldingSum& sum);

}  // namespace KAPHost
