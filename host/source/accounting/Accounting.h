#pragma once

#include <array>
#include <atomic>

#include "kaphost/Snapshot.h"

namespace KAPHost {

// The numbers in the books. Each thread writes a tally of its own, without locked instructions, and
// a total is the sum over all threads, those that have ended included: a block that one thread
// allocates and another one frees leaves 1 and -1 behind.

inline constexpr unsigned kTallySlots = 128;

// Slots: the kinds that have no names, the containers without a type, those of one type each, and
// those of all types for which no slot was left.
inline constexpr unsigned kBlockSlot = 0;
inline constexpr unsigned kBufferSlot = 1;
inline constexpr unsigned kCacheIDSlot = 2;
inline constexpr unsigned kCacheItemSlot = 3;
inline constexpr unsigned kCacheSetSlot = 4;
inline constexpr unsigned kCachePurgeSlot = 5;
inline constexpr unsigned kSinkSlot = 6;
inline constexpr unsigned kProgressSlot = 7;
inline constexpr unsigned kUntypedSlot = 8;
inline constexpr unsigned kFirstTypeSlot = 9;
inline constexpr unsigned kOtherTypesSlot = kTallySlots - 1;

struct Tally {
  struct Entry {
    std::atomic<long> fNumber{0};
    std::atomic<long> fExtent{0};
  };

  std::array<Entry, kTallySlots> fEntries;
  Tally* fPrevious = nullptr;
  Tally* fNext = nullptr;
};

inline thread_local constinit Tally* tTally = nullptr;

// Sets tTally.
Tally& NewTally() noexcept;

inline void Count(unsigned slot, long number, long extent) noexcept {
  Tally& tally = tTally != nullptr ? *tTally : NewTally();
  Tally::Entry& entry = tally.fEntries[slot];
  constexpr auto relaxed = std::memory_order_relaxed;
  if (number != 0) entry.fNumber.store(entry.fNumber.load(relaxed) + number, relaxed);
  entry.fExtent.store(entry.fExtent.load(relaxed) + extent, relaxed);
}

Holding TallyTotal(unsigned slot) noexcept;

}  // namespace KAPHost
