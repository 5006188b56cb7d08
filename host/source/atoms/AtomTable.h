// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "atoms/Bucket.h"
#include "atoms/BucketLevel.h"

namespace KAPHost {

// All atoms of the process, each text once. It is never destroyed: components may release atoms
// until the process ends.
//
// The table is 256 shards by the hash, which grow one by one. A bucket is locked while it is
// searched or changed; above that is only the lock of a growing shard. References are
// counted without a lock, with two exceptions: a look-up adds its reference and a release drops the
// last one under the bucket's lock, so that no look-up finds a dying atom.
//
// Why a release may free the atom that it has removed: it owned the only reference. Another one can
// be made by a holder, of which there is none, or by a look-up, which needs the lock. If a look-up
// came between the moment at which the release saw the last reference and its lock, the count says
// so, and the atom stays.
class AtomTable {
 public:
  constexpr AtomTable() = default;

  // To be called before the table is used; later calls do nothing.
  void Start() noexcept;

  // A new reference; null when out of memory or without a text.
  KAPStringAtom* Intern(const char* text) noexcept {
    return text ? Intern(TextKey(text)).fAtom : nullptr;
  }
  struct Interned {
    KAPStringAtom* fAtom;
    bool fIsNew;
  };
  Interned Intern(const TextKey& key) noexcept;

  // Null is ignored.
  void AddRef(KAPStringAtom* atom) noexcept;
  void AddRefs(KAPStringAtom& atom, long references) noexcept;
  void Release(KAPStringAtom* atom) noexcept {
    if (atom) Release(*atom, 1);
  }
  // Has the processor fetch the bucket of a hash, for a change to come.
  void FetchBucket(std::uint32_t hash) const noexcept { __builtin_prefetch(&BucketOf(hash), 1); }
  // Releases references that the caller owns.
  void Release(KAPStringAtom& atom, long references) noexcept;

  // Calls visit(atom) for every atom, under the lock of its bucket. In a small program most buckets
  // are empty, and locking them takes most of the time.
  template <class Visit>
  void ForEach(Visit visit) {
    for (unsigned shard = 0; shard < kShards; ++shard) {
      const ThreadLock staying(fGrowths[shard].fMutex);
      const Array array = ArrayOf(shard);
      for (std::uint32_t i = 0; i <= array.fMask; ++i) {
        if (array.fBuckets[i].IsUnused()) continue;
        const BucketLock lock(array.fBuckets[i]);
        array.fBuckets[i].ForEach(visit);
      }
    }
  }

  // For the time of a fork: no other thread changes the table.
  void Lock() noexcept;
  void Unlock() noexcept;

 private:
  static constexpr unsigned kShards = BucketLevel::kShards;
  static constexpr unsigned kFirstSizeLog = 2;
  static constexpr unsigned kLevels = 20;

  // The buckets of a shard. A shard stores the address and, in the low bits, which are zero in an
  // address of a bucket, the logarithm of the size, so that one load gets both.
  struct Array {
    Bucket* fBuckets;
    std::uint32_t fMask;
  };
  // Kept apart from the addresses, which all threads read.
  struct alignas(64) Growth {
    std::mutex fMutex;
    std::atomic<std::uint32_t> fLinked{0};  // buckets beyond the array
  };
  // Holds a bucket, unless the process had a single thread at construction.
  class BucketLock {
   public:
    explicit BucketLock(Bucket& bucket) noexcept;
    // Locks the bucket of a hash.
    BucketLock(const AtomTable& table, std::uint32_t hash) noexcept;
    BucketLock(const BucketLock&) = delete;
    BucketLock& operator=(const BucketLock&) = delete;
    ~BucketLock() {
      if (fIsLocked) fBucket->Unlock();
    }
    Bucket& operator*() const noexcept { return *fBucket; }
    Bucket* operator->() const noexcept { return fBucket; }
    // Leaves the bucket locked.
    void Keep() noexcept { fIsLocked = false; }

   private:
    Bucket* fBucket;
    bool fIsLocked;
  };

  static unsigned ShardOf(std::uint32_t hash) noexcept { return hash >> 24; }
  Array ArrayOf(unsigned shard) const noexcept {
    const std::uintptr_t word = fArrays[shard].load(std::memory_order_acquire);
    return {reinterpret_cast<Bucket*>(word & ~std::uintptr_t{63}),
            (std::uint32_t{1} << (word & 63)) - 1};
  }
  Bucket& BucketOf(std::uint32_t hash) const noexcept {
    const Array array = ArrayOf(ShardOf(hash));
    return array.fBuckets[hash & array.fMask];
  }

  KAPStringAtom* Add(Bucket& bucket, KAPStringAtom& atom) noexcept;
  void ReleaseLast(KAPStringAtom& atom, long references) noexcept;
  template <bool kIsFollowed>
  void RemoveLast(KAPStringAtom& atom, long references) noexcept;
  bool IsCrowded(unsigned shard) const noexcept;
  void Grow(unsigned shard) noexcept;
  static unsigned SizeLog(const Array& array) noexcept {
    return static_cast<unsigned>(std::bit_width(array.fMask));
  }
  Array NewArray(unsigned shard, std::uint32_t mask) noexcept;
  void RetireArray(const Array& array) noexcept;
  static Bucket* Move(Bucket& bucket, const Array& larger) noexcept;

  std::array<std::atomic<std::uintptr_t>, kShards> fArrays{};
  std::array<Growth, kShards> fGrowths{};
  std::array<std::array<Bucket, 1 << kFirstSizeLog>, kShards> fFirst{};
  std::mutex fLevelsMutex;                     // nested in that of a growth
  std::array<BucketLevel, kLevels> fLevels{};  // the first size is not among them
  bool fAreBucketsLocked = false;              // by Lock, under whose locks it is written
};

[[gnu::visibility("hidden")]] extern constinit AtomTable gAtoms;

}  // namespace KAPHost
