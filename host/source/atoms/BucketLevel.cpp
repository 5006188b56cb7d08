// SPDX-License-Identifier: MIT
#include "atoms/BucketLevel.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>

namespace KAPHost {

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

// Null when out of memory. Large pages are optional: the system may not provide them.
void* Map(std::size_t bytes) noexcept {
  const std::size_t alignment = std::min(bytes, kLargePage);
  void* const mapped = mmap(nullptr, bytes + alignment, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapped == MAP_FAILED) return nullptr;
  const auto address = reinterpret_cast<std::uintptr_t>(mapped);
  void* const aligned = reinterpret_cast<void*>((address + alignment - 1) & ~(alignment - 1));
  if (bytes >= kLargePage) madvise(aligned, bytes, MADV_HUGEPAGE);
  return aligned;
}

}  // namespace

// Bytes of zero are empty buckets.
Bucket* BucketLevel::Take(unsigned shard, unsigned sizeLog) noexcept {
  if (!fBuckets) fBuckets = static_cast<Bucket*>(Map(Bytes(sizeLog)));
  return fBuckets ? fBuckets + (std::size_t{shard} << sizeLog) : nullptr;
}

void BucketLevel::Leave(unsigned sizeLog) noexcept {
  if (++fLeft == kShards) madvise(fBuckets, Bytes(sizeLog), MADV_DONTNEED);
}

}  // namespace KAPHost
