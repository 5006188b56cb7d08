// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>

#include "atoms/Atom.h"
#include "atoms/TextKey.h"
#include "base/Counting.h"

namespace KAPHost {

// A bucket of the table of atoms: a lock, and six slots with a tag each. It is one cache line, so a
// look-up of an atom touches one line that other threads write, besides the atom. When a seventh
// atom comes, the last slot becomes a link to a further bucket, which the same lock guards.
//
// Slots are filled from the first on, without gaps.
struct alignas(64) Bucket {
  static constexpr unsigned kSlots = 6;
  enum State : std::uint32_t { kLocked = 1, kLinked = 2 };

  std::atomic<std::uint32_t> fState{0};
  std::array<std::uint16_t, kSlots> fTags{};
  std::array<void*, kSlots> fSlots{};

  bool TryLock() noexcept {
    std::uint32_t state = fState.load(std::memory_order_relaxed);
    return (state & kLocked) == 0 &&
           fState.compare_exchange_strong(state, state | kLocked, std::memory_order_acquire,
                                          std::memory_order_relaxed);
  }
  void Unlock() noexcept { SetState(State() & ~std::uint32_t{kLocked}); }

  // The rest requires the lock.

  // Null when no atom has this text.
  KAPStringAtom* Find(const TextKey& key) const noexcept {
    for (const Bucket* bucket = this; bucket; bucket = bucket->Next()) {
      for (unsigned i = 0; i < bucket->Size(); ++i) {
        KAPStringAtom* const atom = bucket->AtomAt(i);
        if (!atom) return nullptr;
        if (bucket->fTags[i] == key.fTag && atom->fHash == key.fHash &&
            std::strcmp(atom->Text(), key.fText) == 0) {
          return atom;
        }
      }
    }
    return nullptr;
  }
  // When the slots are full, adds the bucket that newBucket() returns. False when that is null.
  template <class NewBucket>
  bool Add(KAPStringAtom& atom, NewBucket newBucket) noexcept {
    Bucket& last = Last();
    const unsigned count = last.Count();
    if (count < kSlots) return last.Set(count, &atom), true;
    Bucket* const added = newBucket();
    if (!added) return false;
    added->Set(0, last.AtomAt(kSlots - 1));
    added->Set(1, &atom);
    last.fSlots[kSlots - 1] = added;
    last.SetState(last.State() | kLinked);
    return true;
  }
  // The last atom takes the place of the removed one. Returns a bucket that became empty by that,
  // which the caller deletes, or null.
  Bucket* Remove(const KAPStringAtom& atom) noexcept;

  template <class Visit>
  void ForEach(Visit visit) const {
    for (const Bucket* bucket = this; bucket; bucket = bucket->Next()) {
      for (unsigned i = 0; i < bucket->Count(); ++i) visit(*bucket->AtomAt(i));
    }
  }

  // Links empty buckets, which need no lock for that.
  Bucket& MakeSpare(Bucket* next) noexcept {
    fSlots[0] = next;
    return *this;
  }
  Bucket* Spare() const noexcept { return static_cast<Bucket*>(fSlots[0]); }

  // The slots that hold atoms: all, or all but the link.
  unsigned Size() const noexcept { return (State() & kLinked) != 0 ? kSlots - 1 : kSlots; }
  unsigned Count() const noexcept {
    unsigned count = 0;
    while (count < Size() && fSlots[count]) ++count;
    return count;
  }
  KAPStringAtom* AtomAt(unsigned i) const noexcept {
    return static_cast<KAPStringAtom*>(fSlots[i]);
  }
  Bucket* Next() const noexcept {
    return (State() & kLinked) != 0 ? static_cast<Bucket*>(fSlots[kSlots - 1]) : nullptr;
  }

 private:
  std::uint32_t State() const noexcept { return fState.load(std::memory_order_relaxed); }
  void SetState(std::uint32_t state) noexcept { fState.store(state, std::memory_order_release); }
  void Set(unsigned i, KAPStringAtom* atom) noexcept {
    fTags[i] = atom->fTag;
    fSlots[i] = atom;
  }
  Bucket& Last() noexcept {
    Bucket* last = this;
    while (Bucket* const next = last->Next()) last = next;
    return *last;
  }
};

static_assert(sizeof(Bucket) == 64);

}  // namespace KAPHost
