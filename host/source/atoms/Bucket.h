// SPDX-License-Identifier: MIT
#pragma once

#include <emmintrin.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>

#include "atoms/Atom.h"
#include "atoms/TextKey.h"
#include "base/Counting.h"

namespace KAPHost {

// A bucket of the table of atoms: a lock, and nine slots with a tag each. It is one cache line, so
// a look-up of an atom touches one line that other threads write, besides the atom. When a tenth
// atom comes, the last slot becomes a link to a further bucket, which the same lock guards.
//
// A slot holds the 48 bits that an address of a process has, unless it asks the system for more:
// waiting for buckets is most of the time for many atoms, and whole pointers would leave room for
// six. Slots are filled from the first on, without gaps. A search compares all tags at once, since
// the processor would guess wrong about the end of a loop over them.
class alignas(64) Bucket {
 public:
  static constexpr unsigned kSlots = 9;

  bool TryLock() noexcept {
    std::uint8_t state = fState.load(std::memory_order_relaxed);
    return (state & kLocked) == 0 &&
           fState.compare_exchange_strong(state, static_cast<std::uint8_t>(state | kLocked),
                                          std::memory_order_acquire, std::memory_order_relaxed);
  }
  void Unlock() noexcept { SetState(State() & ~kLocked); }
  // Without atoms and not locked at this moment. Needs no lock.
  bool IsUnused() const noexcept { return State() == 0; }

  // The rest requires the lock.

  // Null when no atom has this text.
  KAPStringAtom* Find(const TextKey& key) const noexcept {
    for (const Bucket* bucket = this; bucket; bucket = bucket->Next()) {
      for (unsigned found = bucket->Matches(key.fTag); found != 0; found &= found - 1) {
        KAPStringAtom* const atom = bucket->AtomAt(static_cast<unsigned>(std::countr_zero(found)));
        if (key.IsTextOf(*atom)) return atom;
      }
    }
    return nullptr;
  }
  // When the slots are full, adds the bucket that newBucket() returns. False when that is null.
  template <class NewBucket>
  bool Add(KAPStringAtom& atom, NewBucket newBucket) noexcept {
    Bucket& last = Last();
    if (last.Count() < kSlots) return last.Append(&atom, TagOf(atom)), true;
    Bucket* const added = newBucket();
    if (!added) return false;
    added->Append(last.PointerAt(kSlots - 1), last.fTags[kSlots - 1]);
    added->Append(&atom, TagOf(atom));
    last.SetPointer(kSlots - 1, added);
    last.SetState(last.State() | kLinked);
    return true;
  }
  // The last atom takes the place of the removed one. Returns a bucket that became empty by that,
  // which the caller deletes, or null.
  Bucket* Remove(const KAPStringAtom& atom) noexcept;

  template <class Visit>
  void ForEach(Visit visit) const {
    for (const Bucket* bucket = this; bucket; bucket = bucket->Next()) {
      for (unsigned i = 0; i < bucket->Size(); ++i) visit(*bucket->AtomAt(i));
    }
  }

  // Links empty buckets, which need no lock for that.
  Bucket& MakeSpare(Bucket* next) noexcept {
    SetPointer(0, next);
    return *this;
  }
  Bucket* Spare() const noexcept { return static_cast<Bucket*>(PointerAt(0)); }
  // Removes all atoms of this bucket, not of those that are linked, and the link.
  using Atoms = std::array<KAPStringAtom*, kSlots>;
  Atoms TakeAtoms() noexcept {
    Atoms atoms{};
    for (unsigned i = 0; i < Size(); ++i) atoms[i] = AtomAt(i);
    SetState(State() & kLocked);
    return atoms;
  }

  Bucket* Next() const noexcept {
    return (State() & kLinked) != 0 ? static_cast<Bucket*>(PointerAt(kSlots - 1)) : nullptr;
  }

 private:
  // The bits of the state above the number of used slots, a link included.
  static constexpr unsigned kCount = 15;
  static constexpr unsigned kLinked = 16;
  static constexpr unsigned kLocked = 32;
  static constexpr std::size_t kPointerBytes = 6;

  unsigned State() const noexcept { return fState.load(std::memory_order_relaxed); }
  void SetState(unsigned state) noexcept {
    fState.store(static_cast<std::uint8_t>(state), std::memory_order_release);
  }
  unsigned Count() const noexcept { return State() & kCount; }
  // The slots that hold atoms.
  unsigned Size() const noexcept { return Count() - ((State() & kLinked) != 0 ? 1 : 0); }

  // The slots with the tag, as bits. The tags are compared in two loads of eight.
  unsigned Matches(std::uint16_t tag) const noexcept {
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(tag));
    const auto matches = [&](const std::uint8_t* tags) {
      const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(tags));
      return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(eight, wanted))) & 0xFF;
    };
    return (matches(fTags.data()) | matches(fTags.data() + 1) << 1) & ((1u << Size()) - 1);
  }

  // A pointer is the upper part of a word that begins two bytes before it.
  void* PointerAt(unsigned i) const noexcept {
    std::uintptr_t word = 0;
    std::memcpy(&word,
                reinterpret_cast<const unsigned char*>(this) + kFirstWord + i * kPointerBytes,
                sizeof word);
    return reinterpret_cast<void*>(word >> 16);
  }
  KAPStringAtom* AtomAt(unsigned i) const noexcept {
    return static_cast<KAPStringAtom*>(PointerAt(i));
  }
  void SetPointer(unsigned i, const void* pointer) noexcept {
    std::memcpy(fPointers.data() + i * kPointerBytes, &pointer, kPointerBytes);
  }
  static std::uint8_t TagOf(const KAPStringAtom& atom) noexcept {
    return static_cast<std::uint8_t>(atom.fTag);
  }
  // Tags come along with pointers: to read an atom takes longer than all the rest.
  void Set(unsigned i, const void* atom, std::uint8_t tag) noexcept {
    fTags[i] = tag;
    SetPointer(i, atom);
  }
  void Append(const void* atom, std::uint8_t tag) noexcept {
    Set(Count(), atom, tag);
    SetState(State() + 1u);
  }
  Bucket& Last() noexcept {
    Bucket* last = this;
    while (Bucket* const next = last->Next()) last = next;
    return *last;
  }

  static constexpr std::size_t kFirstWord = 8;

  std::atomic<std::uint8_t> fState{0};
  std::array<std::uint8_t, kSlots> fTags{};
  std::array<unsigned char, kSlots * kPointerBytes> fPointers{};
};

static_assert(sizeof(Bucket) == 64);

}  // namespace KAPHost
