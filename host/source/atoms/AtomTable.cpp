// SPDX-License-Identifier: MIT
#include "atoms/AtomTable.h"

#include <time.h>

#include <bit>
#include <limits>
#include <new>
#include <utility>

#include "checks/Quarantine.h"
#include "heap/Heap.h"

namespace KAPHost {

constinit AtomTable gAtoms;

namespace {

// Waits for the holder of a bucket. It needs nanoseconds, unless the system has interrupted it.
// Then only sleep lets it run, whatever the priorities.
class Waiting {
 public:
  void Pause() noexcept {
    if (fTurns < 100) {
      ++fTurns;
      __builtin_ia32_pause();
    } else {
      const timespec moment = {0, 20'000};
      nanosleep(&moment, nullptr);
    }
  }

 private:
  int fTurns = 0;
};

KAPStringAtom* NewAtom(const TextKey& key) noexcept {
  void* const block = Allocate(sizeof(KAPStringAtom) + key.fLength + 1, BlockKind::kShared);
  if (!block) return nullptr;
  auto* const atom = new (block) KAPStringAtom{1, key.fHash, key.fTag};
  std::memcpy(static_cast<char*>(block) + sizeof(KAPStringAtom), key.fText, key.fLength + 1);
  return atom;
}

void FreeAtom(void* atom) noexcept { Deallocate(atom); }

}  // namespace

AtomTable::BucketLock::BucketLock(Bucket& bucket) noexcept
    : fBucket(&bucket), fIsLocked(!IsSingleThreaded()) {
  if (!fIsLocked) return;
  for (Waiting waiting; !bucket.TryLock();) waiting.Pause();
}

// While a shard grows, its buckets stay locked until the new array is known.
AtomTable::BucketLock::BucketLock(const AtomTable& table, std::uint32_t hash) noexcept
    : fBucket(&table.BucketOf(hash)), fIsLocked(!IsSingleThreaded()) {
  if (!fIsLocked) return;
  for (Waiting waiting; !fBucket->TryLock(); fBucket = &table.BucketOf(hash)) waiting.Pause();
}

void AtomTable::Start() noexcept {
  TextKey::DrawSeed();
  for (unsigned shard = 0; shard < kShards; ++shard) {
    if (fArrays[shard].load(std::memory_order_relaxed) != 0) continue;
    fArrays[shard].store(reinterpret_cast<std::uintptr_t>(fFirst[shard].data()) | kFirstSizeLog,
                         std::memory_order_release);
  }
}

AtomTable::Interned AtomTable::Intern(const TextKey& key) noexcept {
  Interned interned{nullptr, true};
  {
    const BucketLock bucket(*this, key.fHash);
    if (KAPStringAtom* const found = bucket->Find(key)) {
      Increment(found->fCount);
      return {found, false};
    }
    interned.fAtom = Add(*bucket, key);
  }
  if (IsCrowded(ShardOf(key.fHash))) Grow(ShardOf(key.fHash));
  return interned;
}

KAPStringAtom* AtomTable::Add(Bucket& bucket, const TextKey& key) noexcept {
  KAPStringAtom* const atom = NewAtom(key);
  if (!atom) return nullptr;
  const auto newBucket = [&] {
    Increment(fGrowths[ShardOf(key.fHash)].fLinked);
    return new (std::nothrow) Bucket;
  };
  if (bucket.Add(*atom, newBucket)) return atom;
  Decrement(fGrowths[ShardOf(key.fHash)].fLinked);
  FreeAtom(atom);
  return nullptr;
}

void AtomTable::AddRef(KAPStringAtom* atom) noexcept {
  if (atom) Increment(atom->fCount);
}

void AtomTable::AddRefs(KAPStringAtom& atom, long references) noexcept {
  Update(atom.fCount, [references](long count) { return count + references; });
}

void AtomTable::Release(KAPStringAtom& atom, long references) noexcept {
  long before = atom.fCount.load(std::memory_order_relaxed);
  while (before > references) {
    if (TryUpdate(atom.fCount, before, before - references)) return;
  }
  if (before < 0) return ReportDead(&atom, "release");
  ReleaseLast(atom, references);
}

// The quarantine and the dead mark come before the unlock: another thread that wrongly releases the
// same reference waits for the bucket, and must find the atom dead and its record kept.
void AtomTable::ReleaseLast(KAPStringAtom& atom, long references) noexcept {
  Bucket* emptied = nullptr;
  bool isDead = false;
  bool isKept = false;
  {
    const BucketLock bucket(*this, atom.fHash);
    const long before = atom.fCount.load(std::memory_order_acquire);
    isDead = before < 0;
    if (!isDead) {
      // Nobody else changes a count of only these references: no locked instruction then.
      if (before != references &&
          Update(atom.fCount, [=](long count) { return count - references; }) != references) {
        return;  // a look-up came first
      }
      emptied = bucket->Remove(atom);
      isKept = KeepDead(&atom, &FreeAtom, "atom", atom.Text());
      // Far below zero: references that are added to a dead atom do not revive it.
      atom.fCount.store(std::numeric_limits<long>::min() / 2, std::memory_order_release);
    }
  }
  if (isDead) return ReportDead(&atom, "release");
  if (emptied) {
    delete emptied;
    Decrement(fGrowths[ShardOf(atom.fHash)].fLinked);
  }
  if (!isKept) FreeAtom(&atom);
}

// At three atoms and a half for each bucket, one bucket in sixteen needs a further one. Their
// number stands for that of the atoms, for which all threads would have to change one counter with
// each atom.
bool AtomTable::IsCrowded(unsigned shard) const noexcept {
  return 16 * fGrowths[shard].fLinked.load(std::memory_order_relaxed) > ArrayOf(shard).fMask + 1;
}

// Doubles the array of a shard. Other threads wait only for this shard, a 256th of the atoms, and
// for those of its buckets that are moved: these stay locked for good, and who waits for one looks
// for the array again. Without memory for a larger array, further buckets are linked.
void AtomTable::Grow(unsigned shard) noexcept {
  const ThreadLock growing(fGrowths[shard].fMutex);
  if (!IsCrowded(shard)) return;  // another thread was faster
  const Array old = ArrayOf(shard);
  const Array larger = {new (std::nothrow) Bucket[2 * (std::size_t{old.fMask} + 1)],
                        2 * old.fMask + 1};
  if (!larger.fBuckets) return;
  for (std::uint32_t i = 0; i <= old.fMask; ++i) {
    BucketLock lock(old.fBuckets[i]);
    lock.Abandon();
    for (Bucket* unused = Move(old.fBuckets[i], larger); unused;) {
      delete std::exchange(unused, unused->Spare());
      Decrement(fGrowths[shard].fLinked);
    }
  }
  const auto sizeLog = static_cast<unsigned>(std::bit_width(larger.fMask));
  fArrays[shard].store(reinterpret_cast<std::uintptr_t>(larger.fBuckets) | sizeLog,
                       std::memory_order_release);
  Retire(shard, old.fBuckets);
}

// Moves the atoms of a bucket. The new buckets are out of reach until the array is published, so
// they need no locks. Returns what is left of the buckets that were linked, a list.
//
// Moving needs no memory. An atom goes to one of two buckets, and the links of the old one are
// enough for both: n atoms need (n - 6) / 5 links, rounded up, and two such numbers need no more
// than their sum. That is so after each bucket of the chain, too: the first has five atoms, each
// further one five and a link to spare.
Bucket* AtomTable::Move(Bucket& bucket, const Array& larger) noexcept {
  Bucket* spare = nullptr;
  const auto takeSpare = [&spare] {
    Bucket* const taken = spare;
    spare = taken->Spare();
    return new (taken) Bucket;
  };
  for (Bucket *from = &bucket, *next; from; from = next) {
    const auto slots = from->fSlots;
    const unsigned count = from->Count();
    next = from->Next();
    if (from != &bucket) spare = &from->MakeSpare(spare);
    for (unsigned i = 0; i < count; ++i) {
      auto& atom = *static_cast<KAPStringAtom*>(slots[i]);
      larger.fBuckets[atom.fHash & larger.fMask].Add(atom, takeSpare);
    }
  }
  return spare;
}

// A thread that has read the address of an array may read its locks at any later time, so the array
// stays. All former arrays of a shard together are smaller than the present one.
void AtomTable::Retire(unsigned shard, Bucket* buckets) noexcept {
  if (buckets == fFirst[shard].data()) return;
  if (IsSingleThreaded()) {
    delete[] buckets;
  } else {
    fGrowths[shard].fRetired = &buckets->MakeSpare(fGrowths[shard].fRetired);
  }
}

// A process with one thread leaves the buckets alone: to write each of them would copy the table in
// the parent and in the child.
void AtomTable::Lock() noexcept {
  fAreBucketsLocked = !IsSingleThreaded();
  for (unsigned shard = 0; shard < kShards; ++shard) {
    fGrowths[shard].fMutex.lock();
    if (!fAreBucketsLocked) continue;
    const Array array = ArrayOf(shard);
    for (std::uint32_t i = 0; i <= array.fMask; ++i) {
      BucketLock(array.fBuckets[i]).Abandon();
    }
  }
}

void AtomTable::Unlock() noexcept {
  for (unsigned shard = 0; shard < kShards; ++shard) {
    if (fAreBucketsLocked) {
      const Array array = ArrayOf(shard);
      for (std::uint32_t i = 0; i <= array.fMask; ++i) array.fBuckets[i].Unlock();
    }
    fGrowths[shard].fMutex.unlock();
  }
}

}  // namespace KAPHost
