// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "atoms/Bucket.h"

namespace KAPHost {

// The memory for the arrays of buckets of one size, one for each shard. All are next to each other,
// because shards grow at nearly the same time: the system can then back them with large pages. In
// a table of a million atoms, which is read in no order, the processor would otherwise wait for an
// address as long as for a bucket.
//
// The memory is mapped when the first shard takes its array. When the last one has left its array,
// the memory goes back to the system, but not the addresses, since a thread may still look at
// the locks: it finds them open.
//
// Not thread-safe.
class BucketLevel {
 public:
  static constexpr unsigned kShards = 256;

  constexpr BucketLevel() = default;

  // An array of empty buckets; null when out of memory. A shard takes its array once.
  Bucket* Take(unsigned shard, unsigned sizeLog) noexcept;
  // A shard does not use its array any more.
  void Leave(unsigned sizeLog) noexcept;

 private:
  static std::size_t Bytes(unsigned sizeLog) noexcept {
    return (kShards * sizeof(Bucket)) << sizeLog;
  }

  Bucket* fBuckets = nullptr;
  unsigned fLeft = 0;
};

}  // namespace KAPHost
