// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace NPOSObjectImpl {

// Counts the live objects of all kinds. One counter for all threads made two threads slower than
// one: each new object waited for the cache line. So each thread counts in a slot of its own.
//
// The slot of a thread is found by its thread pointer, which no other live thread has. No
// thread-local variable points to it, and nothing runs when a thread ends: a destructor of the
// library would keep it loaded until the thread has ended, and after dlclose there would be no
// code to run. A slot stays with its thread pointer instead. The C library reuses the memory of
// threads that have ended, so most new threads find a slot that is theirs already.
//
// Why no count is lost: a slot is claimed once, by compare-and-swap, and never given up. Two live
// threads have different thread pointers, so at most one live thread adds to a claimed slot, and an
// ordinary addition suffices. A thread with the pointer of one that has ended was created after
// that end; the C library, which reused the memory, has ordered the two. After a fork the only
// thread of the child keeps its pointer. Threads that find no slot near their place share one that
// is changed by atomic additions: where thread pointers keep changing, the slots are taken one day,
// and looking at all of them would cost more than the addition. What a thread has counted stays in
// its slot and is part of every sum.
//
// Slots are 128 bytes apart because processors fetch cache lines in pairs. Without the distance,
// two threads took three times as long.
class ObjectCount {
 public:
  constexpr ObjectCount() noexcept = default;

  // Of the objects that are made and deleted on this thread. [any thread]
  void AddMade() noexcept { Add(&Slot::fMade); }
  void AddDeleted() noexcept { Add(&Slot::fDeleted); }

  // How many objects live: exactly, when other threads make and delete none meanwhile. Otherwise it
  // counts at least those that live throughout the call: deletions are read first, and a thread
  // that reads one also reads that the object was made.
  std::uint64_t Live() const noexcept;

 private:
  struct alignas(128) Slot {
    std::atomic<const void*> fThread = nullptr;
    std::atomic<std::uint64_t> fMade = 0;
    std::atomic<std::uint64_t> fDeleted = 0;
  };
  using Count = std::atomic<std::uint64_t> Slot::*;

  // The release makes a deletion visible only together with what happened before it.
  void Add(Count count) noexcept {
    const void* const thread = __builtin_thread_pointer();
    Slot& slot = fSlots[FirstSlot(thread)];
    if (slot.fThread.load(std::memory_order_relaxed) != thread) [[unlikely]] {
      return AddElsewhere(thread, count);
    }
    AddInOwn(slot, count);
  }
  static void AddInOwn(Slot& slot, Count count) noexcept {
    std::atomic<std::uint64_t>& counted = slot.*count;
    counted.store(counted.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  [[gnu::noinline]] void AddElsewhere(const void* thread, Count count) noexcept;
  std::uint64_t Sum(Count count) const noexcept;

  static constexpr unsigned kBits = 6;
  static constexpr std::size_t kSlots = std::size_t{1} << kBits;
  static constexpr std::size_t kNear = 4;

  static std::size_t FirstSlot(const void* thread) noexcept {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
    return reinterpret_cast<std::uintptr_t>(thread) * kOdd >> (64 - kBits);
  }

  Slot fSlots[kSlots];
  Slot fShared;
};

}  // namespace NPOSObjectImpl
