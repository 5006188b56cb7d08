// SPDX-License-Identifier: MIT
#pragma once

#include <emmintrin.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "atoms/Atom.h"
#include "atoms/TextKey.h"
#include "base/IntrusiveList.h"

namespace KAPHost {

// References to often used atoms, which a thread has taken from the shared counts in advance. It
// hands them out and takes them back without touching memory that another thread writes. With two
// threads, look-up and release of a known word then take a tenth of the time.
//
// A cache is 512 sets of four atoms, each with its credits: the references that the atom's count
// includes and no component holds. The last credit of an atom is not handed out: it keeps the atom
// alive that the cache points at. The accounting subtracts all credits, so snapshots are exact.
//
// Only atoms that a look-up has found in the table come in, when the set missed the same one twice
// in a row: of texts that are all different, none drives a word out. Long texts stay out, because
// the cache keeps memory after the last component has released the atom.
//
// A thread also keeps each last reference that it releases until it has released 32 more. The
// atom's bucket, which must be searched to remove the atom, has long left the processor's caches by
// then. It is fetched at once, and has arrived when it is needed. The accounting subtracts these
// references, too.
//
// Threads: the owner works on its cache without locks. Others read it, or take its credits when the
// host is destroyed; the members that they read are atomic for that.
class alignas(128) AtomCredits {
 public:
  // A reference to the atom of this text from the calling thread's cache; null when it has none.
  static KAPStringAtom* Take(const TextKey& key) noexcept {
    AtomCredits* const cache = tCredits;
    if (!cache) [[unlikely]]
      return nullptr;
    Set& set = cache->SetOf(key.fHash);
    for (unsigned found = set.Matches(key.fHash); found != 0; found &= found - 1) {
      const auto way = static_cast<unsigned>(std::countr_zero(found));
      const KAPStringAtom* const atom = set.fAtoms[way].load(kRelaxed);
      if (atom && key.IsTextOfSameHash(*atom)) return TakeOne(set, way);
    }
    return nullptr;
  }
  // Adds a reference to an atom from the cache. False when the cache does not have the atom.
  static bool TakeFor(KAPStringAtom& atom) noexcept;
  // Releases a reference that the caller owns: to the cache, later, or at once.
  static void Release(KAPStringAtom& atom) noexcept {
    AtomCredits* const cache = tCredits;
    if (!cache || !atom.fIsCached.load(kRelaxed)) return ReleaseUncached(atom);
    Set& set = cache->SetOf(atom.fHash);
    const unsigned way = set.WayOf(atom);
    way != kWays ? GiveOne(set, way) : ReleaseUncached(atom);
  }
  // Tells the calling thread's cache of an atom that the table had and the cache did not.
  static void Missed(KAPStringAtom& atom, const TextKey& key) noexcept;

  // The credits of all threads. The caller holds Mutex() until it has read the counts as well: an
  // ending thread gives up its cache and its credits under that lock.
  static std::unordered_map<const KAPStringAtom*, long> All();
  // Releases the credits of all threads. No other call may run.
  static void ReleaseAll() noexcept;
  // Guards the list of caches.
  static std::mutex& Mutex() noexcept;

  ListLinks<AtomCredits> fLinks;

 private:
  static constexpr auto kRelaxed = std::memory_order_relaxed;
  static constexpr std::uint32_t kSets = 512;
  static constexpr unsigned kWays = 4;
  static constexpr std::uint16_t kBatch = 64;  // taken from a shared count at once
  static constexpr std::uint16_t kMost = 4 * kBatch;
  static constexpr std::size_t kLongestText = 64;
  static constexpr unsigned kLeaving = 32;

  // One cache line.
  struct alignas(64) Set {
    std::array<std::atomic<KAPStringAtom*>, kWays> fAtoms{};
    std::array<std::uint32_t, kWays> fHashes{};
    std::array<std::atomic<std::uint16_t>, kWays> fCredits{};
    std::uint32_t fMissed = 0;  // the hash that was missed last
    std::uint32_t fNext = 0;    // the way to replace

    // The ways with this hash, as bits.
    unsigned Matches(std::uint32_t hash) const noexcept {
      const __m128i hashes = _mm_load_si128(reinterpret_cast<const __m128i*>(fHashes.data()));
      const __m128i equal = _mm_cmpeq_epi32(hashes, _mm_set1_epi32(static_cast<int>(hash)));
      return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(equal)));
    }
    // The way with this atom; kWays when there is none.
    unsigned WayOf(const KAPStringAtom& atom) const noexcept {
      for (unsigned found = Matches(atom.fHash); found != 0; found &= found - 1) {
        const auto way = static_cast<unsigned>(std::countr_zero(found));
        if (fAtoms[way].load(kRelaxed) == &atom) return way;
      }
      return kWays;
    }
  };

  static AtomCredits* NewCache() noexcept;
  static void End(void* ended) noexcept;
  static bool CanKeep(std::size_t length) noexcept;
  // What is rare is apart, so that look-ups and releases of known words save no registers.
  static KAPStringAtom* TakeOne(Set& set, unsigned way) noexcept {
    const std::uint16_t credits = set.fCredits[way].load(kRelaxed);
    if (credits == 1) [[unlikely]]
      return TakeLast(set, way);
    set.fCredits[way].store(static_cast<std::uint16_t>(credits - 1), kRelaxed);
    return set.fAtoms[way].load(kRelaxed);
  }
  static KAPStringAtom* TakeLast(Set& set, unsigned way) noexcept;
  static void GiveOne(Set& set, unsigned way) noexcept {
    const std::uint16_t credits = set.fCredits[way].load(kRelaxed);
    if (credits == kMost) [[unlikely]]
      return GiveToFull(set, way);
    set.fCredits[way].store(static_cast<std::uint16_t>(credits + 1), kRelaxed);
  }
  static void GiveToFull(Set& set, unsigned way) noexcept;
  static void ReleaseUncached(KAPStringAtom& atom) noexcept;
  static void ReleaseLater(KAPStringAtom& atom) noexcept;
  Set& SetOf(std::uint32_t hash) noexcept { return fSets[hash % kSets]; }
  void ReleaseOwn() noexcept;

  [[gnu::visibility("hidden")]] static thread_local constinit AtomCredits* tCredits;

  std::array<Set, kSets> fSets{};
  std::array<std::atomic<KAPStringAtom*>, kLeaving> fLeaving{};  // last references, a ring
  unsigned fNextLeaving = 0;
};

}  // namespace KAPHost
