// SPDX-License-Identifier: MIT
#pragma once

#include <emmintrin.h>

#include <array>
#include <atomic>
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
  static KAPStringAtom* Take(const TextKey& key) noexcept;
  // Adds a reference to an atom from the cache. False when the cache does not have the atom.
  static bool TakeFor(KAPStringAtom& atom) noexcept;
  // Releases a reference that the caller owns: to the cache, later, or at once.
  static void Release(KAPStringAtom& atom) noexcept;
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
    unsigned WayOf(const KAPStringAtom& atom) const noexcept;
  };

  static AtomCredits* NewCache() noexcept;
  static void End(void* ended) noexcept;
  static bool CanKeep(std::size_t length) noexcept;
  static KAPStringAtom* TakeOne(Set& set, unsigned way) noexcept;
  static bool Give(KAPStringAtom& atom) noexcept;
  static void ReleaseLater(KAPStringAtom& atom) noexcept;
  Set& SetOf(std::uint32_t hash) noexcept { return fSets[hash % kSets]; }
  void ReleaseOwn() noexcept;

  static thread_local constinit AtomCredits* tCredits;

  std::array<Set, kSets> fSets{};
  std::array<std::atomic<KAPStringAtom*>, kLeaving> fLeaving{};  // last references, a ring
  unsigned fNextLeaving = 0;
};

}  // namespace KAPHost
