// SPDX-License-Identifier: MIT
#include "atoms/AtomTable.h"

#include <time.h>  // NOLINT(modernize-deprecated-headers): nanosleep is POSIX

#include <bit>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "base/Sanitizers.h"
#include "heap/Heap.h"
#include "quarantine/Quarantine.h"

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

void* NewBlock(const TextKey& key) noexcept {
  return Allocate(sizeof(KAPStringAtom) + key.fLength + 1, BlockKind::kShared);
}

KAPStringAtom& MakeAtom(void* block, const TextKey& key) noexcept {
  auto* const atom = new (block) KAPStringAtom{1, key.fHash, key.fTag, key.ShownLength()};
  key.CopyTo(static_cast<char*>(block) + sizeof(KAPStringAtom));
  HideFromLeakDetector(block);
  return *atom;
}

void FreeAtom(void* atom) noexcept { Deallocate(atom); }

}  // namespace

AtomTable::BucketLock::BucketLock(Bucket& bucket) noexcept
    : fBucket(&bucket), fIsLocked(!IsSingleThreaded()) {
  if (!fIsLocked) return;
  for (Waiting waiting; !bucket.TryLock();) waiting.Pause();
}

// The array may have been replaced since its address was read. Who locks a bucket of a former array
// then does it after the bucket's last holder, the thread that replaced the array, has unlocked it,
// or after the system has cleared its memory, and both is later than the replacement: the second
// look finds it.
AtomTable::BucketLock::BucketLock(const AtomTable& table, std::uint32_t hash) noexcept
    : fBucket(&table.BucketOf(hash)), fIsLocked(!IsSingleThreaded()) {
  if (!fIsLocked) return;
  for (Waiting waiting;; fBucket = &table.BucketOf(hash)) {
    if (!fBucket->TryLock()) {
      waiting.Pause();
    } else if (fBucket == &table.BucketOf(hash)) {
      return;
    } else {
      fBucket->Unlock();
    }
  }
}

void AtomTable::Start() noexcept {
  TextKey::DrawSeed();
  for (unsigned shard = 0; shard < kShards; ++shard) {
    if (fArrays[shard].load(std::memory_order_relaxed) != 0) continue;
    fArrays[shard].store(reinterpret_cast<std::uintptr_t>(fFirst[shard].data()) | kFirstSizeLog,
                         std::memory_order_release);
  }
}

// The block comes before the lock, although the atom may exist: its memory then arrives together
// with that of the bucket, and waiting for both is most of the time of a new text among a million.
AtomTable::Interned AtomTable::Intern(const TextKey& key) noexcept {
  FetchBucket(key.fHash);
  void* const block = NewBlock(key);
  KAPStringAtom* found = nullptr;
  KAPStringAtom* added = nullptr;
  bool isLinked = false;
  {
    const BucketLock bucket(*this, key.fHash);
    found = bucket->Find(key);
    if (found) {
      Increment(found->fCount);
    } else if (block) {
      added = Add(*bucket, MakeAtom(block, key));
      isLinked = bucket->Next();
    }
  }
  if (!added) Deallocate(block);
  if (isLinked && IsCrowded(ShardOf(key.fHash))) Grow(ShardOf(key.fHash));
  return {found ? found : added, !found};
}

// Null when another bucket is needed and memory has run out.
KAPStringAtom* AtomTable::Add(Bucket& bucket, KAPStringAtom& atom) noexcept {
  std::atomic<std::uint32_t>& linked = fGrowths[ShardOf(atom.fHash)].fLinked;
  const auto newBucket = [&linked] {
    auto* const added = new (std::nothrow) Bucket;
    if (added) Increment(linked);
    HideFromLeakDetector(added);
    return added;
  };
  return bucket.Add(atom, newBucket) ? &atom : nullptr;
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

void AtomTable::ReleaseLast(KAPStringAtom& atom, long references) noexcept {
  IsFollowing() ? RemoveLast<true>(atom, references) : RemoveLast<false>(atom, references);
}

// The quarantine and the dead mark come before the unlock: another thread that wrongly releases the
// same reference waits for the bucket, and must find the atom dead and its record kept. What takes
// long and takes locks of the loader, finding the stack, comes before the lock.
template <bool kIsFollowed>
void AtomTable::RemoveLast(KAPStringAtom& atom, long references) noexcept {
  Bucket* emptied = nullptr;
  bool isDead = false;
  bool isKept = false;
  std::shared_ptr<const Stack> stack;
  if constexpr (kIsFollowed) stack = StackOfEnd();
  {
    const BucketLock bucket(*this, atom.fHash);
    const long before = atom.fCount.load(std::memory_order_acquire);
    isDead = kIsFollowed && before < 0;
    if (!isDead) {
      // Nobody else changes a count of only these references: no locked instruction then.
      if (before != references &&
          Update(atom.fCount, [=](long count) { return count - references; }) != references) {
        return;  // a look-up came first
      }
      emptied = bucket->Remove(atom);
      if constexpr (kIsFollowed) {
        isKept = KeepDeadSlowly(&atom, &FreeAtom, "atom", atom.Text(), std::move(stack));
        // Far below zero: references that are added to a dead atom do not revive it.
        atom.fCount.store(std::numeric_limits<long>::min() / 2, std::memory_order_release);
      }
    }
  }
  if (isDead) return ReportDead(&atom, "release");
  if (emptied) {
    delete emptied;
    Decrement(fGrowths[ShardOf(atom.fHash)].fLinked);
  }
  if (!isKept) FreeAtom(&atom);
}

// At six atoms and a half for each bucket, one bucket in eight needs a further one. Their number
// stands for that of the atoms, for which all threads would have to change one counter with each
// atom.
bool AtomTable::IsCrowded(unsigned shard) const noexcept {
  return 8 * fGrowths[shard].fLinked.load(std::memory_order_relaxed) > ArrayOf(shard).fMask + 1;
}

// Doubles the array of a shard. Other threads wait only for this shard, a 256th of the atoms, and
// for those of its buckets that are moved: these stay locked until the new array is known. Without
// memory for a larger array, further buckets are linked.
void AtomTable::Grow(unsigned shard) noexcept {
  const ThreadLock growing(fGrowths[shard].fMutex);
  if (!IsCrowded(shard)) return;  // another thread was faster
  const Array old = ArrayOf(shard);
  const Array larger = NewArray(shard, 2 * old.fMask + 1);
  if (!larger.fBuckets) return;
  for (std::uint32_t i = 0; i <= old.fMask; ++i) {
    BucketLock(old.fBuckets[i]).Keep();
    for (Bucket* unused = Move(old.fBuckets[i], larger); unused;) {
      delete std::exchange(unused, unused->Spare());
      Decrement(fGrowths[shard].fLinked);
    }
  }
  fArrays[shard].store(reinterpret_cast<std::uintptr_t>(larger.fBuckets) | SizeLog(larger),
                       std::memory_order_release);
  for (std::uint32_t i = 0; i <= old.fMask; ++i) old.fBuckets[i].Unlock();
  RetireArray(old);
}

AtomTable::Array AtomTable::NewArray(unsigned shard, std::uint32_t mask) noexcept {
  const unsigned sizeLog = SizeLog({nullptr, mask});
  if (sizeLog > kFirstSizeLog + kLevels) return {nullptr, mask};
  const ThreadLock lock(fLevelsMutex);
  return {fLevels[sizeLog - kFirstSizeLog - 1].Take(shard, sizeLog), mask};
}

void AtomTable::RetireArray(const Array& array) noexcept {
  const unsigned sizeLog = SizeLog(array);
  if (sizeLog == kFirstSizeLog) return;
  const ThreadLock lock(fLevelsMutex);
  fLevels[sizeLog - kFirstSizeLog - 1].Leave(sizeLog);
}

// Moves the atoms of a bucket. The new buckets are out of reach until the array is published, so
// they need no locks. Returns what is left of the buckets that were linked, a list.
//
// Moving needs no memory. An atom goes to one of two buckets, and the links of the old one are
// enough for both: n atoms need (n - 9) / 8 links, rounded up, and two such numbers need no more
// than their sum. That is so after each bucket of the chain, too: the first has eight atoms, each
// further one eight and a link to spare.
Bucket* AtomTable::Move(Bucket& bucket, const Array& larger) noexcept {
  Bucket* spare = nullptr;
  const auto takeSpare = [&spare] {
    Bucket* const taken = spare;
    spare = taken->Spare();
    return new (taken) Bucket;
  };
  for (Bucket *from = &bucket, *next; from; from = next) {
    next = from->Next();
    const Bucket::Atoms atoms = from->TakeAtoms();
    if (from != &bucket) spare = &from->MakeSpare(spare);
    for (KAPStringAtom* const atom : atoms) {
      if (atom) larger.fBuckets[atom->fHash & larger.fMask].Add(*atom, takeSpare);
    }
  }
  return spare;
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
      BucketLock(array.fBuckets[i]).Keep();
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
