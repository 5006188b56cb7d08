// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <limits>

#include "base/Counting.h"

namespace KAPHost {

// The references of an object, from the first until its memory is reused.
//
// While the object is being destroyed the count is below zero and nothing changes it: a delete
// procedure that adds and releases references to the very object neither keeps it alive nor
// destroys it twice. An object with 2^31 - 1 references keeps that count and is never destroyed,
// since the references beyond are unknown; a component that leaks one reference a call gets there.
// Both rule out fetch_add, which changes a count before it looks at it.
//
// Threads: any.
class RefCount {
 public:
  // What a release finds.
  enum class Release {
    kLast,       // that was the last reference: the caller destroys the object
    kReleased,   // the object lives on, possibly without references
    kNone,       // there was no reference
    kDestroyed,  // the object is being destroyed or is dead
  };

  RefCount() = default;

  // False when the object is being destroyed or is dead.
  bool Add() noexcept {
    return Update(fCount,
                  [](int count) { return count < 0 || count == kStuck ? count : count + 1; }) >= 0;
  }
  Release Drop() noexcept { return DropTo(kDying); }
  // Drop in two steps for a caller that holds the only reference (see DropTo). The store is
  // relaxed: no other thread has a reference through which to read the count, and the heap orders
  // the store before the next use of the memory.
  bool HasOne() const noexcept { return fCount.load(std::memory_order_acquire) == 1; }
  void DropOnly() noexcept { fCount.store(kDying, std::memory_order_relaxed); }
  // The same as Drop, but of two releases of the only reference at the same time, one finds that
  // the object is destroyed. For checks, because it takes a locked instruction.
  Release DropExactly() noexcept { return UpdateTo(kDying); }
  // The same, but the object lives on without references: never kLast.
  Release DropAndKeep() noexcept { return DropTo(0); }
  // Whether there was no reference: the caller destroys the object.
  bool Claim() noexcept {
    return Update(fCount, [](int count) { return count == 0 ? kDying : count; }) == 0;
  }
  // The object is destroyed, and its memory stays readable.
  void Bury() noexcept { fCount.store(kDead, std::memory_order_relaxed); }

  bool IsAlive() const noexcept { return Get() >= 0; }
  bool IsDead() const noexcept { return Get() == kDead; }
  int Get() const noexcept { return fCount.load(std::memory_order_relaxed); }
  const int* Address() const noexcept { return reinterpret_cast<const int*>(&fCount); }

 private:
  static constexpr int kStuck = std::numeric_limits<int>::max();
  static constexpr int kDying = -1;
  static constexpr int kDead = -2;

  // A caller that releases the only reference is alone with the object: no thread may add one
  // without holding one. So the most frequent release needs no locked instruction. Two releases
  // of one reference at the same time could both be the last one, but a component that does that
  // has no object to speak of anyway; the host's checks use DropExactly.
  //
  // The store releases for DropAndKeep: the thread that claims the object reads it, and sees what
  // this one has written before.
  Release DropTo(int zero) noexcept {
    if (fCount.load(std::memory_order_acquire) == 1) {
      fCount.store(zero, std::memory_order_release);
      return zero != 0 ? Release::kLast : Release::kReleased;
    }
    return UpdateTo(zero);
  }
  Release UpdateTo(int zero) noexcept {
    const int before = Update(fCount, [zero](int count) {
      if (count <= 0 || count == kStuck) return count;
      return count == 1 ? zero : count - 1;
    });
    if (before == 1 && zero != 0) return Release::kLast;
    if (before > 0) return Release::kReleased;
    return before == 0 ? Release::kNone : Release::kDestroyed;
  }

  std::atomic<int> fCount{1};
};

static_assert(sizeof(RefCount) == sizeof(int));

}  // namespace KAPHost
