// SPDX-License-Identifier: MIT
#include "atoms/AtomCredits.h"

#include <memory>
#include <new>

#include "atoms/AtomTable.h"
#include "base/ThreadEnd.h"
#include "faults/Gate.h"

namespace KAPHost {

namespace {

constinit std::mutex gMutex;
constinit IntrusiveList<AtomCredits> gCaches;

}  // namespace

thread_local constinit AtomCredits* AtomCredits::tCredits = nullptr;

std::mutex& AtomCredits::Mutex() noexcept { return gMutex; }

// Nothing is kept while the host checks for uses of dead atoms, or leaves them to a sanitizer: what
// is kept does not die. The text is kept, too, so it must be short.
bool AtomCredits::CanKeep(std::size_t length) noexcept {
  return length <= kLongestText && !HasGateBits(kGateClosed | kGateChecking | kGatePlain) &&
         (tCredits || NewCache());
}

bool AtomCredits::TakeFor(KAPStringAtom& atom) noexcept {
  if (!tCredits || !atom.fIsCached.load(kRelaxed)) return false;
  Set& set = tCredits->SetOf(atom.fHash);
  const unsigned way = set.WayOf(atom);
  return way != kWays && TakeOne(set, way);
}

// The cache's last credit is a reference, so more can be added without the table.
KAPStringAtom* AtomCredits::TakeLast(Set& set, unsigned way) noexcept {
  KAPStringAtom* const atom = set.fAtoms[way].load(kRelaxed);
  gAtoms.AddRefs(*atom, kBatch);
  set.fCredits[way].store(kBatch, kRelaxed);
  return atom;
}

void AtomCredits::GiveToFull(Set& set, unsigned way) noexcept {
  gAtoms.Release(*set.fAtoms[way].load(kRelaxed), kBatch);
  set.fCredits[way].store(kMost - kBatch + 1, kRelaxed);
}

void AtomCredits::ReleaseUncached(KAPStringAtom& atom) noexcept {
  if (atom.fCount.load(kRelaxed) == 1 && CanKeep(atom.fLength)) return ReleaseLater(atom);
  gAtoms.Release(atom, 1);
}

// The reference need not stay the last one: a look-up may find the atom until it is removed.
void AtomCredits::ReleaseLater(KAPStringAtom& atom) noexcept {
  gAtoms.FetchBucket(atom.fHash);
  auto& place = tCredits->fLeaving[tCredits->fNextLeaving++ % kLeaving];
  KAPStringAtom* const leaving = place.load(kRelaxed);
  place.store(&atom, kRelaxed);
  if (leaving) gAtoms.Release(*leaving, 1);
}

void AtomCredits::Missed(KAPStringAtom& atom, const TextKey& key) noexcept {
  if (!CanKeep(key.fLength)) return;
  Set& set = tCredits->SetOf(key.fHash);
  if (set.fMissed != key.fHash) {
    set.fMissed = key.fHash;
    return;
  }
  atom.fIsCached.store(true, kRelaxed);
  gAtoms.AddRefs(atom, kBatch);
  const unsigned way = set.fNext++ % kWays;
  KAPStringAtom* const replaced = set.fAtoms[way].load(kRelaxed);
  const long credits = set.fCredits[way].load(kRelaxed);
  set.fAtoms[way].store(&atom, kRelaxed);
  set.fHashes[way] = key.fHash;
  set.fCredits[way].store(kBatch, kRelaxed);
  if (replaced) gAtoms.Release(*replaced, credits);
}

std::unordered_map<const KAPStringAtom*, long> AtomCredits::All() {
  std::unordered_map<const KAPStringAtom*, long> all;
  gCaches.ForEach([&](const AtomCredits& cache) {
    for (const Set& set : cache.fSets) {
      for (unsigned way = 0; way < kWays; ++way) {
        const KAPStringAtom* const atom = set.fAtoms[way].load(kRelaxed);
        if (atom) all[atom] += set.fCredits[way].load(kRelaxed);
      }
    }
    for (const auto& place : cache.fLeaving) {
      if (const KAPStringAtom* const atom = place.load(kRelaxed)) ++all[atom];
    }
  });
  return all;
}

void AtomCredits::ReleaseOwn() noexcept {
  for (Set& set : fSets) {
    for (unsigned way = 0; way < kWays; ++way) {
      KAPStringAtom* const atom = set.fAtoms[way].exchange(nullptr, kRelaxed);
      if (atom) gAtoms.Release(*atom, set.fCredits[way].load(kRelaxed));
    }
  }
  for (auto& place : fLeaving) {
    if (KAPStringAtom* const atom = place.exchange(nullptr, kRelaxed)) gAtoms.Release(*atom, 1);
  }
}

void AtomCredits::ReleaseAll() noexcept {
  const std::lock_guard lock(gMutex);
  gCaches.ForEach([](AtomCredits& cache) { cache.ReleaseOwn(); });
}

void AtomCredits::End(void* ended) noexcept {
  const std::unique_ptr<AtomCredits> cache(static_cast<AtomCredits*>(ended));
  tCredits = nullptr;
  const std::lock_guard lock(gMutex);
  cache->ReleaseOwn();
  gCaches.Remove(*cache);
}

AtomCredits* AtomCredits::NewCache() noexcept {
  std::unique_ptr<AtomCredits> cache(new (std::nothrow) AtomCredits);
  if (!cache || !CallAtThreadEnd<&End>(cache.get())) return nullptr;
  const std::lock_guard lock(gMutex);
  gCaches.Append(*cache);
  return tCredits = cache.release();
}

}  // namespace KAPHost
